#include "driver/run_tool.h"

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return mosaicer::run_tool(arguments, std::cout, std::cin);
}
