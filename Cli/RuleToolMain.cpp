// ringwell-rules: the rule commands of `ringwell` (rule explain, rule describe,
// templates), which `ringwell` runs in place of itself.
#include "Cli/RuleTool.h"

#include <exception>
#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    try {
        std::vector<std::string> args(argv + 1, argv + argc);
        ringwell::cli::CommandContext context{std::cout, std::cerr};
        return ringwell::cli::runRuleTool(args, context);
    } catch (const std::exception& error) {
        std::cerr << "ringwell: " << error.what() << '\n';
    } catch (...) {
        std::cerr << "ringwell: unexpected failure\n";
    }
    return ringwell::cli::exitFailure;
}
