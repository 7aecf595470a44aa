// A tree of JSON values that know their lines. Limits keep its memory small.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qltkit
{

struct JsonValue
{
    enum class Kind
    {
        Null,
        Boolean,
        Number,
        Text,
        List,
        Object,
    };

    struct Member;

    Kind kind = Kind::Null;
    bool isCount = false; // the number is an integer and not negative
    int line = 1;
    double number = 0.0;
    std::uint64_t count = 0;     // the exact number when isCount
    std::string text;            // the value of a text
    std::vector<Member> members; // the members of an object or a list; in a list they have no names
};

struct JsonValue::Member
{
    std::string name;
    JsonValue value;
};

constexpr std::size_t MAX_JSON_SIZE = std::size_t{1} << 20; // bytes
constexpr std::size_t MAX_JSON_VALUES = 50000;
constexpr std::size_t MAX_JSON_DEPTH = 8;
constexpr std::size_t MAX_JSON_FIELDS = 32; // the largest number of fields of one object

/// Parses a text. Throws Error with `name` and the line when the text is no JSON, exceeds a limit
/// or has two fields of the same name in one object.
JsonValue ParseJson(std::string_view text, const std::string& name);

/// Returns at most 40 characters of `text` for a message.
std::string Quoted(const std::string& text);

} // namespace qltkit
