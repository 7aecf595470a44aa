#include "Headset/JsonTree.h"

#include <qltkit/Error.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <iterator>

namespace qltkit
{

namespace
{

using Json = nlohmann::json;

/// Keeps the line of the last character that was not white space. The parser reads at most one
/// character after the end of a value, and only to find the end of a number.
struct Place
{
    int current = 1;
    int ofLast = 1;
};

/// Gives the text to the parser and keeps the line.
class Reader
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    Reader(const char* at, Place& place)
        : mAt(at)
        , mPlace(&place)
    {
    }

    reference operator*() const { return *mAt; }

    Reader& operator++()
    {
        if (*mAt == '\n')
        {
            ++mPlace->current;
        }
        else if (*mAt != ' ' && *mAt != '\t' && *mAt != '\r')
        {
            mPlace->ofLast = mPlace->current;
        }
        ++mAt;
        return *this;
    }

    Reader operator++(int)
    {
        const Reader old = *this;
        ++*this;
        return old;
    }

    bool operator==(const Reader& other) const { return mAt == other.mAt; }
    bool operator!=(const Reader& other) const { return mAt != other.mAt; }

private:
    const char* mAt;
    Place* mPlace;
};

/// Builds the tree. Each operation returns true when the parser should continue.
class TreeBuilder final : public nlohmann::json_sax<Json>
{
public:
    TreeBuilder(const std::string& name, const Place& place)
        : mName(name)
        , mPlace(place)
    {
    }

    JsonValue Take() { return std::move(mRoot); }

    bool null() override
    {
        Add(JsonValue::Kind::Null);
        return true;
    }

    bool boolean(bool) override
    {
        Add(JsonValue::Kind::Boolean);
        return true;
    }

    bool binary(binary_t&) override { return false; } // JSON has none

    bool number_integer(number_integer_t value) override
    {
        Add(JsonValue::Kind::Number).number = static_cast<double>(value);
        return true;
    }

    bool number_unsigned(number_unsigned_t value) override
    {
        JsonValue& added = Add(JsonValue::Kind::Number);
        added.number = static_cast<double>(value);
        added.isCount = true;
        added.count = value;
        return true;
    }

    bool number_float(number_float_t, const string_t& text) override
    {
        // The parser's own value comes from the C library. Its last bit differs between systems.
        double& number = Add(JsonValue::Kind::Number).number;
        std::from_chars(text.data(), text.data() + text.size(), number);
        return true;
    }

    bool string(string_t& text) override
    {
        Add(JsonValue::Kind::Text).text = std::move(text);
        return true;
    }

    bool key(string_t& name) override
    {
        const auto& fields = mOpen.back()->members;
        if (fields.size() == MAX_JSON_FIELDS)
        {
            Fail("an object has more than " + std::to_string(MAX_JSON_FIELDS) + " fields");
        }
        if (std::any_of(fields.begin(), fields.end(),
                        [&name](const auto& field) { return field.name == name; }))
        {
            Fail(Quoted(name) + " is there twice");
        }
        mKey = std::move(name);
        return true;
    }

    bool start_object(std::size_t) override { return Open(JsonValue::Kind::Object); }
    bool start_array(std::size_t) override { return Open(JsonValue::Kind::List); }
    bool end_object() override { return Close(); }
    bool end_array() override { return Close(); }

    bool parse_error(std::size_t, const std::string&, const Json::exception& error) override
    {
        // The parser's message is "...: syntax error while parsing value - unexpected end of input;
        // last read: ...".
        constexpr std::string_view BEFORE_REASON = " - ";
        const std::string what = error.what();
        const std::size_t begin = what.find(BEFORE_REASON);
        std::string text = "a number is too large";
        if (begin != std::string::npos)
        {
            text = what.substr(begin + BEFORE_REASON.size());
            text.erase(std::min(text.find("; last read"), text.size()));
        }
        Fail("not JSON: " + text);
    }

private:
    [[noreturn]] void Fail(const std::string& text) const
    {
        throw Error(mName + ", line " + std::to_string(mPlace.ofLast) + ": " + text);
    }

    JsonValue& Add(JsonValue::Kind kind)
    {
        if (++mValues > MAX_JSON_VALUES)
        {
            Fail("there are more than " + std::to_string(MAX_JSON_VALUES) + " values");
        }
        JsonValue* value = &mRoot;
        if (!mOpen.empty())
        {
            auto& members = mOpen.back()->members;
            members.push_back({std::move(mKey), {}});
            mKey.clear();
            value = &members.back().value;
        }
        value->kind = kind;
        value->line = mPlace.ofLast;
        return *value;
    }

    bool Open(JsonValue::Kind kind)
    {
        if (mOpen.size() == MAX_JSON_DEPTH)
        {
            Fail("there are more than " + std::to_string(MAX_JSON_DEPTH) + " levels");
        }
        mOpen.push_back(&Add(kind));
        return true;
    }

    bool Close()
    {
        mOpen.pop_back();
        return true;
    }

    const std::string& mName;
    const Place& mPlace;
    JsonValue mRoot;
    std::vector<JsonValue*> mOpen; // only the last one grows, so the others do not move
    std::string mKey;
    std::size_t mValues = 0;
};

} // namespace

JsonValue ParseJson(std::string_view text, const std::string& name)
{
    if (text.size() > MAX_JSON_SIZE)
    {
        throw Error(name + " is larger than " + std::to_string(MAX_JSON_SIZE) + " bytes");
    }
    Place place;
    TreeBuilder builder(name, place);
    Json::sax_parse(Reader(text.data(), place), Reader(text.data() + text.size(), place), &builder);
    return builder.Take();
}

std::string Quoted(const std::string& text)
{
    constexpr std::size_t LIMIT = 40;
    std::string quoted = "\"" + text.substr(0, LIMIT) + (text.size() > LIMIT ? "...\"" : "\"");
    std::replace_if(
        quoted.begin(), quoted.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return quoted;
}

} // namespace qltkit
