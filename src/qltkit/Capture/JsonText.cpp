#include "Capture/JsonText.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace qltkit
{

namespace
{

constexpr std::string_view BASE64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view HEX = "0123456789abcdef";
constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";
constexpr int MAX_DEPTH = 64;

/// The number of bytes of the UTF-8 character at the beginning of `text`. 0 when the character is
/// invalid.
std::size_t CharacterSize(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t first = byte(0);
    const std::size_t size = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
    if (size == 0 || size > text.size())
    {
        return 0;
    }
    for (std::size_t i = 1; i < size; ++i)
    {
        if ((byte(i) & 0xC0) != 0x80)
        {
            return 0;
        }
    }
    // The encoding is overlong, half of a surrogate pair, or above U+10FFFF.
    const bool bad = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                     (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F);
    return bad ? 0 : size;
}

void AppendUtf8(std::string& text, std::uint32_t code)
{
    const auto tail = [code](int shift)
    { return static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
    if (code < 0x80)
    {
        text += static_cast<char>(code);
    }
    else if (code < 0x800)
    {
        text += static_cast<char>(0xC0 | code >> 6);
        text += tail(0);
    }
    else if (code < 0x10000)
    {
        text += static_cast<char>(0xE0 | code >> 12);
        text += tail(6);
        text += tail(0);
    }
    else
    {
        text += static_cast<char>(0xF0 | code >> 18);
        text += tail(12);
        text += tail(6);
        text += tail(0);
    }
}

/// Takes tokens from the beginning of a text. After the text proves to be no JSON, every operation
/// fails.
class Cursor
{
public:
    explicit Cursor(std::string_view json)
        : mJson(json)
    {
    }

    std::string_view Rest() const { return mJson; }

    bool Take(char token)
    {
        SkipSpace();
        if (mJson.empty() || mJson.front() != token)
        {
            return false;
        }
        mJson.remove_prefix(1);
        return true;
    }

    bool AtEnd()
    {
        SkipSpace();
        return mJson.empty();
    }

    /// Takes a string, including its quotes.
    std::optional<std::string_view> TakeString()
    {
        SkipSpace();
        if (mJson.empty() || mJson.front() != '"')
        {
            return std::nullopt;
        }
        for (std::size_t i = 1; i < mJson.size(); ++i)
        {
            if (mJson[i] == '"')
            {
                return TakeText(i + 1);
            }
            i += mJson[i] == '\\' ? 1 : 0;
        }
        return std::nullopt;
    }

    /// Takes a value of any kind. A nested value is skipped by counting its brackets.
    std::optional<std::string_view> TakeValue()
    {
        SkipSpace();
        const std::string_view begin = mJson;
        int depth = 0;
        do
        {
            SkipSpace();
            if (mJson.empty())
            {
                return std::nullopt;
            }
            const char c = mJson.front();
            if (c == '"')
            {
                if (!TakeString())
                {
                    return std::nullopt;
                }
                continue;
            }
            depth += c == '{' || c == '[' ? 1 : c == '}' || c == ']' ? -1 : 0;
            const bool isSeparator = depth == 0 && (c == ',' || c == ':');
            if (isSeparator || depth < 0 || depth > MAX_DEPTH)
            {
                return std::nullopt;
            }
            const std::size_t word = mJson.find_first_of(",:{}[]\" \t\r\n");
            TakeText(word == 0 ? 1 : word);
        } while (depth > 0);
        return begin.substr(0, begin.size() - mJson.size());
    }

private:
    void SkipSpace()
    {
        const std::size_t begin = mJson.find_first_not_of(" \t\r\n");
        mJson.remove_prefix(begin == std::string_view::npos ? mJson.size() : begin);
    }

    std::string_view TakeText(std::size_t size)
    {
        const std::string_view text = mJson.substr(0, size);
        mJson.remove_prefix(text.size());
        return text;
    }

    std::string_view mJson;
};

/// The value of the four hexadecimal digits at the beginning of `text`.
std::optional<std::uint32_t> HexOf(std::string_view text)
{
    std::uint32_t code = 0;
    const std::string_view digits = text.substr(0, 4);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    const bool good = error == std::errc() && end == digits.data() + 4;
    return good ? std::optional(code) : std::nullopt;
}

/// Takes the escape after a backslash from the beginning of `rest` and appends its character.
bool AppendEscaped(std::string& text, std::string_view& rest)
{
    constexpr std::string_view NAMES = "\"\\/bfnrt";
    constexpr std::string_view VALUES = "\"\\/\b\f\n\r\t";
    const char name = rest.front();
    rest.remove_prefix(1);
    if (const std::size_t i = NAMES.find(name); i != std::string_view::npos)
    {
        text += VALUES[i];
        return true;
    }
    const auto first = name == 'u' ? HexOf(rest) : std::nullopt;
    if (!first)
    {
        return false;
    }
    rest.remove_prefix(4);
    std::uint32_t code = *first;
    if (code >= 0xD800 && code < 0xDC00 && rest.substr(0, 2) == "\\u")
    {
        const auto second = HexOf(rest.substr(2));
        if (second && *second >= 0xDC00 && *second < 0xE000)
        {
            code = 0x10000 + ((code - 0xD800) << 10) + (*second - 0xDC00);
            rest.remove_prefix(6);
        }
    }
    AppendUtf8(text, code >= 0xD800 && code < 0xE000 ? 0xFFFD : code);
    return true;
}

/// The text of a string that is given with its quotes.
std::optional<std::string> Unquoted(std::string_view string)
{
    std::string text;
    std::string_view rest = string.substr(1, string.size() - 2);
    text.reserve(rest.size());
    while (!rest.empty())
    {
        const std::size_t plain = std::min(rest.find('\\'), rest.size());
        text += rest.substr(0, plain);
        rest.remove_prefix(plain);
        if (!rest.empty())
        {
            rest.remove_prefix(1);
            if (!AppendEscaped(text, rest))
            {
                return std::nullopt;
            }
        }
    }
    return text;
}

} // namespace

void AppendJsonString(std::string& json, std::string_view text)
{
    json += '"';
    while (!text.empty())
    {
        const std::size_t size = CharacterSize(text);
        const auto first = static_cast<std::uint8_t>(text.front());
        if (size == 0)
        {
            json += REPLACEMENT;
        }
        else if (first == '"' || first == '\\')
        {
            json += {'\\', text.front()};
        }
        else if (first < 0x20)
        {
            json += "\\u00";
            json += {HEX[first >> 4], HEX[first & 15]};
        }
        else
        {
            json += text.substr(0, size);
        }
        text.remove_prefix(size == 0 ? 1 : size);
    }
    json += '"';
}

void AppendJsonTime(std::string& json, std::uint64_t timeNs)
{
    json += "{\"sec\":" + std::to_string(timeNs / 1000000000);
    json += ",\"nsec\":" + std::to_string(timeNs % 1000000000) + "}";
}

void AppendBase64(std::string& json, std::string_view bytes)
{
    json += '"';
    json.reserve(json.size() + bytes.size() / 3 * 4 + 5);
    for (std::size_t i = 0; i < bytes.size(); i += 3)
    {
        std::uint32_t group = 0;
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        for (std::size_t j = 0; j < 3; ++j)
        {
            group = group << 8 | (j < count ? static_cast<std::uint8_t>(bytes[i + j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j)
        {
            json += j <= count ? BASE64[group >> (18 - 6 * j) & 63] : '=';
        }
    }
    json += '"';
}

std::optional<std::string> FromBase64(std::string_view text)
{
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (std::size_t i = 0; i < BASE64.size(); ++i)
    {
        values[static_cast<std::uint8_t>(BASE64[i])] = static_cast<std::int8_t>(i);
    }
    const bool whole = text.size() % 4 == 0;
    for (int padding = 0; whole && padding < 2 && !text.empty() && text.back() == '='; ++padding)
    {
        text.remove_suffix(1);
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t group = 0;
    int bits = 0;
    for (const char c : text)
    {
        const std::int8_t value = values[static_cast<std::uint8_t>(c)];
        if (value < 0 || !whole)
        {
            return std::nullopt;
        }
        group = group << 6 | static_cast<std::uint32_t>(value);
        bits += 6;
        if (bits >= 8)
        {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFF);
        }
    }
    return bytes;
}

std::optional<std::string_view> JsonObject::Field(std::string_view name) const
{
    Cursor cursor(mJson);
    std::optional<std::string_view> field;
    if (!cursor.Take('{'))
    {
        return std::nullopt;
    }
    bool more = !cursor.Take('}');
    while (more)
    {
        const auto key = cursor.TakeString();
        if (!key || !cursor.Take(':'))
        {
            return std::nullopt;
        }
        const auto value = cursor.TakeValue();
        const bool wanted = key->substr(1, key->size() - 2) == name;
        if (!value || (wanted && field))
        {
            return std::nullopt;
        }
        field = wanted ? value : field;
        more = cursor.Take(',');
        if (!more && !cursor.Take('}'))
        {
            return std::nullopt;
        }
    }
    return cursor.AtEnd() ? field : std::nullopt;
}

std::optional<std::string> JsonObject::String(std::string_view name) const
{
    const auto value = Field(name);
    return value && value->front() == '"' ? Unquoted(*value) : std::nullopt;
}

std::optional<std::uint32_t> JsonObject::Number(std::string_view name) const
{
    const auto value = Field(name);
    std::uint32_t number = 0;
    if (!value)
    {
        return std::nullopt;
    }
    const char* const end = value->data() + value->size();
    const auto [last, error] = std::from_chars(value->data(), end, number);
    return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

} // namespace qltkit
