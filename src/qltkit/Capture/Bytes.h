// Little-endian numbers and length-prefixed strings, as in MCAP records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qltkit
{

template <typename Number>
void AppendNumber(std::string& bytes, Number value)
{
    for (std::size_t i = 0; i < sizeof value; ++i)
    {
        bytes.push_back(static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i)));
    }
}

inline void AppendString(std::string& bytes, std::string_view text)
{
    AppendNumber(bytes, static_cast<std::uint32_t>(text.size()));
    bytes += text;
}

template <typename Number>
Number NumberAt(const char* bytes)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i)
    {
        value |= std::uint64_t{static_cast<std::uint8_t>(bytes[i])} << (8 * i);
    }
    return static_cast<Number>(value);
}

/// Reads the fields of a record one after another. A field that is longer than the remaining bytes
/// reads as zero or empty, and so does every field after it. `Whole` is then false.
class ByteReader
{
public:
    explicit ByteReader(std::string_view bytes)
        : mBytes(bytes)
    {
    }

    bool Whole() const { return mWhole; }
    std::string_view Rest() const { return mBytes; }

    template <typename Number>
    Number Take()
    {
        const std::string_view bytes = TakeBytes(sizeof(Number));
        return mWhole ? NumberAt<Number>(bytes.data()) : Number{};
    }

    std::string_view TakeString() { return TakeBytes(Take<std::uint32_t>()); }

    std::string_view TakeBytes(std::uint64_t count)
    {
        if (!mWhole || count > mBytes.size())
        {
            mWhole = false;
            mBytes = {};
            return {};
        }
        const std::string_view bytes = mBytes.substr(0, static_cast<std::size_t>(count));
        mBytes.remove_prefix(bytes.size());
        return bytes;
    }

private:
    std::string_view mBytes;
    bool mWhole = true;
};

} // namespace qltkit
