#pragma once
// The machine-readable result of a benchmark program: with --summary on its command line, the
// program ends its output with one line "summary bench=NAME key=value ...", which
// scripts/bench.sh collects into docs/PERFORMANCE.md. Values carry their unit in the key
// (seconds, mib_per_s, peak_kib).

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string>

namespace kq::bench {

// Removes `flag` from the command line; returns whether it was there.
inline bool take_flag(int& argc, char** argv, const char* flag) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], flag) != 0) continue;
        for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
        argv[--argc] = nullptr;
        return true;
    }
    return false;
}

// The "key=value" fields that a worker process wrote into the file at `path`, as numbers.
inline std::map<std::string, double> read_report(const std::string& path) {
    std::map<std::string, double> values;
    std::ifstream in(path);
    for (std::string field; in >> field;)
        if (const std::size_t equals = field.find('='); equals != std::string::npos)
            values[field.substr(0, equals)] = std::strtod(field.c_str() + equals + 1, nullptr);
    return values;
}

class Summary {
public:
    explicit Summary(const char* bench) : line_(std::string("summary bench=") + bench) {}

    void add(const char* key, double value) {
        char text[64];
        std::snprintf(text, sizeof text, "%.6g", value);
        add(key, std::string(text));
    }
    void add(const char* key, long value) { add(key, std::to_string(value)); }
    void add(const char* key, const std::string& value) { line_ += std::string(" ") + key + "=" + value; }

    void print() const { std::printf("%s\n", line_.c_str()); }

private:
    std::string line_;
};

} // namespace kq::bench
