#include "driver/run_tool.h"

#include <csignal>
#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    // A console that goes away, as a pipe to `head` does, ends the words of a run but not its work.
    std::signal(SIGPIPE, SIG_IGN);
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return mosaicer::run_tool(arguments, std::cout, std::cin);
}
