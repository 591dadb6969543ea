#pragma once
// Running the independent tools that native tests use as oracles (gzip, unadf, xdms ...)
// through the shell.

#include <cstdio>
#include <string>

namespace kq::test {

// Runs `command` in the shell; its exit status as pclose reports it (0 for success), and in
// `output`, when given, what it wrote to standard output and standard error.
inline int run_shell(const std::string& command, std::string* output = nullptr) {
    FILE* pipe = popen(("{ " + command + "; } 2>&1").c_str(), "r");
    if (pipe == nullptr) return -1;
    std::string text;
    char buffer[4096];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, got);
    if (output != nullptr) *output = std::move(text);
    return pclose(pipe);
}

// Whether the shell finds the program `tool`.
inline bool have_tool(const std::string& tool) { return run_shell("command -v " + tool + " >/dev/null") == 0; }

} // namespace kq::test
