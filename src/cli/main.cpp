#include <iostream>

#include "cli/commands.h"

int main(int argc, char** argv) { return qm::cli::RunCli(argc, argv, std::cout, std::cerr); }
