// The small part of JSON that captures need: it writes strings, and it finds the fields of an
// object without building a tree. So a forged text costs no memory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qltkit
{

/// Appends `text` in quotes. Bytes that are not valid UTF-8 become U+FFFD.
void AppendJsonString(std::string& json, std::string_view text);

/// Appends {"sec":..,"nsec":..}.
void AppendJsonTime(std::string& json, std::uint64_t timeNs);

/// Appends the bytes as base64 in quotes, with padding.
void AppendBase64(std::string& json, std::string_view bytes);

/// Empty when the text is not valid base64.
std::optional<std::string> FromBase64(std::string_view text);

/// A JSON object from a foreign writer.
class JsonObject
{
public:
    /// `json` must outlive this object.
    explicit JsonObject(std::string_view json)
        : mJson(json)
    {
    }

    /// The text of the field's value. Empty when the field is missing or appears twice, and when
    /// the object is malformed.
    std::optional<std::string_view> Field(std::string_view name) const;

    /// The value of a string. Also empty when the field is no string.
    std::optional<std::string> String(std::string_view name) const;

    /// The value of an unsigned integer of 32 bits. Also empty when the field is no such number.
    std::optional<std::uint32_t> Number(std::string_view name) const;

private:
    std::string_view mJson;
};

} // namespace qltkit
