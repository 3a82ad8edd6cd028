// main.cpp - the fileio command-line tool (see CommandLine.cpp, or run `fileio --help`).

#include "Commands.h"

#include <string>
#include <vector>

int main(int argc, char** argv) {
    return fileio::tool::Main(std::vector<std::string>(argv + 1, argv + argc));
}
