#include <qlt/Render/Shaders.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace
{

using qlt::Shaders;

/// This reads the text before any test, and perhaps before the library's own static objects exist.
const std::string gWhileLoading = Shaders::TextureShaderV();

/// The FNV-1a hash.
std::uint64_t Hash(const std::string& text)
{
    std::uint64_t value = 0xCBF29CE484222325;
    for (const char c : text)
    {
        value = (value ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    }
    return value;
}

} // namespace

// The lengths and hashes are those of the published texts. Each line ends with a single line feed.
TEST(ShadersTest, TheTextsAreExactToTheCharacter)
{
    const struct
    {
        const std::string& (*text)();
        std::size_t length;
        std::uint64_t hash;
    } rows[] = {
        {Shaders::TextureShaderV, 363, 0xE8AD5CF06655B821},
        {Shaders::TextureShaderF, 373, 0x2BC2832EF9B20604},
        {Shaders::ObjectShaderV, 197, 0xCE2934B089077137},
        {Shaders::ObjectShaderF, 491, 0x96B28F7C48E03C9F},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.text().size(), row.length) << row.text();
        EXPECT_EQ(Hash(row.text()), row.hash) << row.text();
        EXPECT_EQ(&row.text(), &row.text()); // all callers get the same string
    }
    EXPECT_EQ(gWhileLoading, Shaders::TextureShaderV());
    static_assert(!std::is_default_constructible_v<Shaders> && !std::is_aggregate_v<Shaders>);
}
