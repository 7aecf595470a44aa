// JSON text as a tree that knows its lines, with limits that keep its memory small.
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
    bool isCount = false; // a number that is whole and not below zero
    int line = 1;
    double number = 0.0;
    std::uint64_t count = 0;     // the number, exactly, when it is a count
    std::string text;            // of a text
    std::vector<Member> members; // of a list, without names, or an object
};

struct JsonValue::Member
{
    std::string name;
    JsonValue value;
};

constexpr std::size_t MAX_JSON_SIZE = std::size_t{1} << 20; // bytes
constexpr std::size_t MAX_JSON_VALUES = 50000;
constexpr std::size_t MAX_JSON_DEPTH = 8;
constexpr std::size_t MAX_JSON_FIELDS = 32; // of one object

/// Error, with `name` and the line, for text that is no JSON, exceeds a limit or has two fields of
/// one name in an object.
JsonValue ParseJson(std::string_view text, const std::string& name);

/// At most 40 characters of `text`, for a message.
std::string Quoted(const std::string& text);

} // namespace qltkit
