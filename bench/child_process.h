#pragma once
// Runs a contender of a benchmark as a process of its own and measures it: wall time and the
// child's peak resident memory (wait4). The child's peak starts from what it shares of the
// parent's memory at the fork, so benchmarks keep little memory of their own.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

namespace kq::bench {

struct Measurement {
    double seconds = 0;
    long peak_kib = 0;
    bool ok = false; // exited with status 0
};

// Runs `arguments` (found on PATH) with standard input from `in` and standard output to `out`
// when they are given, else /dev/null for the output; standard error goes to /dev/null.
inline Measurement run(const std::vector<std::string>& arguments, const std::string& in = {},
                       const std::string& out = {}) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY);
        if (!in.empty()) dup2(open(in.c_str(), O_RDONLY), STDIN_FILENO);
        dup2(out.empty() ? null : open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    Measurement result;
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result.peak_kib = usage.ru_maxrss;
    result.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return result;
}

// The fastest of `rounds` runs (any failure fails it).
inline Measurement best_of(int rounds, const std::vector<std::string>& arguments) {
    Measurement best;
    for (int i = 0; i < rounds; ++i) {
        const Measurement m = run(arguments);
        if (!m.ok) return m;
        if (i == 0 || m.seconds < best.seconds) best = m;
    }
    return best;
}

} // namespace kq::bench
