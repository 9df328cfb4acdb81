#include "CommandLine.h"

#include <clocale>

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");
    return parvela::runCommandLine(argc, argv);
}
