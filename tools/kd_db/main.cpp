#include "program.h"

int main(int argc, char** argv)
{
    return kd_tool::runProgram(argc, argv);
}
