#include <qlt/Render/Shaders.h>

#include "fakes/HashOf.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace
{

using qlt::Shaders;

/// This reads the text before any test, and perhaps before the library's own static objects exist.
const std::string gWhileLoading = Shaders::TextureShaderV();

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
        EXPECT_EQ(HashOf(row.text()), row.hash) << row.text();
        EXPECT_EQ(&row.text(), &row.text()); // all callers get the same string
    }
    EXPECT_EQ(gWhileLoading, Shaders::TextureShaderV());
    static_assert(!std::is_default_constructible_v<Shaders> && !std::is_aggregate_v<Shaders>);
}
