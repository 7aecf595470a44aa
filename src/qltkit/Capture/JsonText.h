// The little JSON that captures need: writing strings, and finding the fields of an object without
// a tree of it in memory, so that a forged text costs nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qltkit
{

/// In quotes. What is no UTF-8 becomes U+FFFD.
void AppendJsonString(std::string& json, std::string_view text);

/// {"sec":..,"nsec":..}
void AppendJsonTime(std::string& json, std::uint64_t timeNs);

/// In quotes, with padding.
void AppendBase64(std::string& json, std::string_view bytes);

/// Nothing when it is no base64.
std::optional<std::string> FromBase64(std::string_view text);

/// A JSON object that somebody else has written.
class JsonObject
{
public:
    /// `json` must outlive this.
    explicit JsonObject(std::string_view json)
        : mJson(json)
    {
    }

    /// The field's value as it stands there; nothing when there is no such field, when it stands
    /// there twice, or when the object is malformed.
    std::optional<std::string_view> Field(std::string_view name) const;

    /// Nothing when it is no string either.
    std::optional<std::string> String(std::string_view name) const;

    /// Nothing when it is no whole number of 32 bits without a sign either.
    std::optional<std::uint32_t> Number(std::string_view name) const;

private:
    std::string_view mJson;
};

} // namespace qltkit
