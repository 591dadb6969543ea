#include "tests/support/option_record.h"

#include <cstring>

namespace kq::test {
namespace {

class LayoutWalk {
public:
    explicit LayoutWalk(const KQOption* record)
        : base_(reinterpret_cast<const std::byte*>(record)), cursor_(base_ + sizeof(KQOption)) {}

    bool array(const kq_char* const* pointer, std::uint32_t count, const char* name) {
        if (count == 0 ? pointer != nullptr : pointer != reinterpret_cast<const kq_char* const*>(cursor_))
            return fail(std::string(name) + " array is not where the layout puts it");
        cursor_ += count * sizeof(void*);
        return true;
    }

    bool text(const kq_char* pointer, std::u16string& out, const char* name) {
        if (reinterpret_cast<const std::byte*>(pointer) != cursor_)
            return fail(std::string(name) + " does not follow the previous string");
        const std::size_t length = std::char_traits<char16_t>::length(reinterpret_cast<const char16_t*>(pointer));
        out.assign(reinterpret_cast<const char16_t*>(pointer), length);
        cursor_ += (length + 1) * sizeof(char16_t);
        return true;
    }

    bool optional_text(const kq_char* pointer, std::optional<std::u16string>& out, const char* name) {
        if (pointer == nullptr) return true;
        return text(pointer, out.emplace(), name);
    }

    std::size_t bytes() const { return static_cast<std::size_t>(cursor_ - base_); }
    const std::string& error() const { return error_; }

private:
    bool fail(std::string message) {
        error_ = std::move(message);
        return false;
    }
    const std::byte* base_;
    const std::byte* cursor_;
    std::string error_;
};

} // namespace

std::optional<OptionView> read_option_record(const KQOption* record, std::string& error) {
    error.clear();
    if (record == nullptr) {
        error = "no record";
        return std::nullopt;
    }
    if (record->cbSize != 136) {
        error = "cbSize is not 136";
        return std::nullopt;
    }
    if (record->secondText || record->thirdText || record->secondChoiceTexts || record->thirdChoiceTexts) {
        error = "second and third texts must be null";
        return std::nullopt;
    }
    OptionView view;
    view.type = record->type;
    view.flags = record->flags;
    const std::uint32_t count = record->count;
    view.values.resize(count);
    view.labels.resize(count);
    view.descriptions.resize(count);
    LayoutWalk walk(record);
    bool ok = walk.array(record->choiceValues, count, "choice values") &&
              walk.array(record->choiceLabels, count, "choice labels") &&
              walk.array(record->choiceDescriptions, count, "choice descriptions") &&
              walk.text(record->name, view.name, "name") && walk.text(record->label, view.label, "label") &&
              walk.text(record->description, view.description, "description") &&
              walk.optional_text(record->groupLabel, view.group_label, "group label") &&
              walk.optional_text(record->groupDescription, view.group_description, "group description");
    for (std::uint32_t i = 0; ok && i < count; ++i) ok = walk.text(record->choiceValues[i], view.values[i], "value");
    for (std::uint32_t i = 0; ok && i < count; ++i) ok = walk.text(record->choiceLabels[i], view.labels[i], "label");
    for (std::uint32_t i = 0; ok && i < count; ++i)
        ok = walk.text(record->choiceDescriptions[i], view.descriptions[i], "description");
    ok = ok && walk.text(record->currentValue, view.current_value, "current value") &&
         walk.text(record->defaultValue, view.default_value, "default value");
    if (!ok) {
        error = walk.error();
        return std::nullopt;
    }
    view.formula_bytes = walk.bytes();
    return view;
}

} // namespace kq::test
