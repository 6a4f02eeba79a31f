#include "app/Program.h"

#include <iostream>

int main(int argc, char** argv)
{
    montala::app::CommandIo io{std::cout, std::cerr};
    return montala::app::runProgram(argc, argv, io);
}
