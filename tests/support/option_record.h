#pragma once
// Reads an option record as a host would, and checks its layout on the way: the arrays of
// choice values, labels and descriptions right after the 136-byte header, then every string
// back to back in the documented order (name, label, description, group label, group
// description, the choice values, labels and descriptions, the current and default values).

#include "kq_amiga.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kq::test {

struct OptionView {
    std::uint32_t type = 0, flags = 0;
    std::u16string name, label, description;
    std::optional<std::u16string> group_label, group_description;
    std::vector<std::u16string> values, labels, descriptions;
    std::u16string current_value, default_value;
    // What the size formula gives: header + 8 per array entry + 2 × (length + 1) per string.
    std::size_t formula_bytes = 0;
};

// The record's contents, or nullopt with `error` saying which layout rule it breaks.
std::optional<OptionView> read_option_record(const KQOption* record, std::string& error);

} // namespace kq::test
