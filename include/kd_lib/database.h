/// \file
/// The base of database connections: settings and linked tables.
#pragma once

#include <kd_lib/databasetable.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib {

/// Connection settings and the tables that a back end reports. It does not know SQL. Its operations succeed without
/// doing anything, so a back end overrides only those that it needs. The library instantiates it once, over
/// `DatabaseTable`. The order of the virtual operations is part of the binary interface. Threads: one thread per
/// object.
template <class Table>
class Database {
public:
    /// The linked tables in the order of linking; this object owns them.
    std::vector<Table*> tableList;

    std::string engine;    ///< name of the engine; a back end sets it
    std::string host;      ///< host, by default "localhost"; for SQLite the directory of database files
    std::string user;      ///< user, by default "anonymous"
    std::string password;  ///< password
    std::string database;  ///< current database; for SQLite the path of its file

    /// An object with the default settings.
    Database() { defaultSet(); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Deletes the linked tables.
    virtual ~Database()
    {
        defaultSet();
        clearTableList();
    }

    /// Connects with the current settings; the base class only returns true.
    virtual bool connect() { return true; }

    /// Assigns the settings, calls `connect()`, and returns true even if that fails.
    virtual bool connect(const std::string& hostName, const std::string& userName, const std::string& userPassword,
                         const std::string& databaseName)
    {
        host = hostName;
        user = userName;
        password = userPassword;
        database = databaseName;
        connect();
        return true;
    }

    /// Deliberate: the base class returns true here and in `isDisconnected`; back ends override both.
    virtual bool isConnected() const { return true; }

    /// See `isConnected`.
    virtual bool isDisconnected() const { return true; }

    /// Restores the default settings, including the engine's name, deletes the linked tables, and returns true.
    virtual bool disconnect()
    {
        defaultSet();
        clearTableList();
        return true;
    }

    /// Makes `name` the current database and returns true.
    virtual bool useDatabase(const std::string& name) { return setDatabase(name); }

    /// As `useDatabase`.
    virtual bool createDatabase(const std::string& name) { return setDatabase(name); }

    /// Assigns the default settings; the linked tables stay.
    void defaultSet()
    {
        engine = "";
        host = "localhost";
        user = "anonymous";
        password = "";
        database = "";
    }

    /// Creates a table of this name, with the current database as its `Path`, and returns it. This object
    /// owns it until the next `clearTableList`. A name may be linked more than once.
    Table* linkTable(const std::string& tableName)
    {
        auto table = std::make_unique<Table>(tableName);
        table->Path = database;
        tableList.push_back(table.get());
        return table.release();
    }

    /// Closes the linked tables that are open, deletes all of them, and returns true.
    bool clearTableList()
    {
        for (Table* table : tableList) {
            if (table != nullptr && table->is_open()) {
                table->close();
            }
            delete table;
        }
        tableList.clear();
        return true;
    }

private:
    bool setDatabase(const std::string& name)
    {
        database = name;
        return true;
    }
};

extern template class KD_LIB_EXPORT Database<DatabaseTable>;

}  // namespace kd_lib
