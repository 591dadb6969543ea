#pragma once
// A text field of a record under construction: absent, a text, or the id of a string in the
// module's string table that stands for its text until the record is packed.

#include <cstdint>
#include <string_view>

namespace kq {

class TextRef {
public:
    enum class Kind { absent, text, string_id };

    constexpr TextRef() = default;
    constexpr TextRef(std::u16string_view text) : kind_(Kind::text), text_(text) {}
    constexpr TextRef(const char16_t* text) : TextRef(std::u16string_view(text)) {}
    static constexpr TextRef from_string_id(std::uint16_t id) {
        TextRef ref;
        ref.kind_ = Kind::string_id;
        ref.id_ = id;
        return ref;
    }

    constexpr Kind kind() const { return kind_; }
    constexpr std::u16string_view text() const { return text_; }
    constexpr std::uint16_t string_id() const { return id_; }

private:
    Kind kind_ = Kind::absent;
    std::u16string_view text_;
    std::uint16_t id_ = 0;
};

} // namespace kq
