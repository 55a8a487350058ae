// Your own table class: a log file, whose lines are a date, a level and a free text.
#include <kd_lib/filetable.h>

#include <fstream>
#include <iostream>

namespace {

/// Lines such as "2024-03-05 WARN disk is nearly full". Opening, walking and numbering of records come
/// from FileTable; this class defines the columns and cuts the records.
class LogTable : public kd_lib::FileTable {
public:
    explicit LogTable(const std::string& name) : FileTable(name)
    {
        Extension = "log";
        RecordLength = 4096;  // lines of at most 4095 characters
    }

    bool readHeader() override
    {
        defineFields();
        Fields.add(std::string("day"));
        Fields.add(std::string("level"));
        Fields.add(std::string("text"));
        return true;
    }

    bool extractContent(const std::string& record) override
    {
        const std::size_t day = record.find(' ');
        const std::size_t level = day == std::string::npos ? day : record.find(' ', day + 1);
        const bool whole = level != std::string::npos;
        Fields.List[0]->Value = whole ? record.substr(0, day) : "";
        Fields.List[1]->Value = whole ? record.substr(day + 1, level - day - 1) : "";
        Fields.List[2]->Value = whole ? record.substr(level + 1) : record;
        return true;
    }
};

}  // namespace

int main()
{
    std::ofstream("server.log") << "2024-03-05 INFO started\n"
                                   "2024-03-06 WARN disk is nearly full\n"
                                   "stray line\n";

    LogTable log("server");
    if (!log.open() || !log.getFieldList()) {
        return 1;
    }
    while (log.fetchRecord()) {
        std::cout << "[" << log.Fields.getData("level") << "] " << log.Fields.getData("text") << "\n";
    }

    log.goRecord(2);
    log.fetchRecord();
    std::cout << "Record 2 is of " << log.Fields.getData("day") << ".\n";
    return 0;
}
