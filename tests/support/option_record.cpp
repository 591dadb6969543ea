#include "tests/support/option_record.h"

#include <cstring>

namespace kq::test {

std::optional<OptionView> read_option_record(const KQOption* record, std::string& error) {
    error = record == nullptr       ? "no record"
            : record->cbSize != 136 ? "cbSize is not 136"
            : record->secondText || record->thirdText || record->secondChoiceTexts || record->thirdChoiceTexts
                ? "second and third texts must be null"
                : "";
    if (!error.empty()) return std::nullopt;
    const std::uint32_t count = record->count;
    OptionView view{.type = record->type, .flags = record->flags};
    const auto* cursor = reinterpret_cast<const std::byte*>(record) + sizeof(KQOption);
    // Each array and string must sit where the previous one ended.
    const auto array = [&](const kq_char* const* pointer, const char* name) {
        if (count == 0 ? pointer != nullptr : reinterpret_cast<const std::byte*>(pointer) != cursor)
            error = std::string(name) + " array is not where the layout puts it";
        cursor += count * sizeof(void*);
        return error.empty();
    };
    const auto text = [&](const kq_char* pointer, std::u16string& out, const char* name) {
        if (reinterpret_cast<const std::byte*>(pointer) != cursor)
            error = std::string(name) + " does not follow the previous string";
        if (!error.empty()) return false;
        out = reinterpret_cast<const char16_t*>(pointer);
        cursor += (out.size() + 1) * sizeof(char16_t);
        return true;
    };
    const auto optional_text = [&](const kq_char* pointer, std::optional<std::u16string>& out, const char* name) {
        return pointer == nullptr || text(pointer, out.emplace(), name);
    };
    const auto texts = [&](const kq_char* const* pointers, std::vector<std::u16string>& out, const char* name) {
        out.resize(count);
        for (std::uint32_t i = 0; i < count; ++i)
            if (!text(pointers[i], out[i], name)) return false;
        return true;
    };
    if (array(record->choiceValues, "choice values") && array(record->choiceLabels, "choice labels") &&
        array(record->choiceDescriptions, "choice descriptions") && text(record->name, view.name, "name") &&
        text(record->label, view.label, "label") && text(record->description, view.description, "description") &&
        optional_text(record->groupLabel, view.group_label, "group label") &&
        optional_text(record->groupDescription, view.group_description, "group description") &&
        texts(record->choiceValues, view.values, "value") && texts(record->choiceLabels, view.labels, "label") &&
        texts(record->choiceDescriptions, view.descriptions, "description") &&
        text(record->currentValue, view.current_value, "current value") &&
        text(record->defaultValue, view.default_value, "default value")) {
        view.formula_bytes = static_cast<std::size_t>(cursor - reinterpret_cast<const std::byte*>(record));
        return view;
    }
    return std::nullopt;
}

} // namespace kq::test
