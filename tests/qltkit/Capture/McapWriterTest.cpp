#include <qltkit/Capture/McapWriter.h>

#include <qltkit/Error.h>

#include "CaptureFiles.h"

#include "fakes/HashOf.h"

// The independent library of capture_test.py reads such files. The hash shows every other change.
TEST(McapWriterTest, AFileWithTwoChannelsHasItsBytes)
{
    std::string file;
    std::vector<std::size_t> sizes; // of the file after each step
    qltkit::McapWriter mcap([&file](std::string_view bytes) { file += bytes; });
    sizes.push_back(file.size());
    const std::uint16_t raw = mcap.AddChannel({"/raw", "x-test", "", "", "", {{"a", "b"}}});
    const std::uint16_t state =
        mcap.AddChannel({"/state", "json", "test.State", "jsonschema", R"({"type":"object"})", {}});
    EXPECT_EQ(raw, 1);
    EXPECT_EQ(state, 2);
    sizes.push_back(file.size());
    mcap.AddMetadata("settings", {{"c", "d"}, {"e", "f"}});
    sizes.push_back(file.size());
    mcap.AddMessage({state, 7, 3000, 2000, "{}"});
    mcap.AddMessage({raw, 0, 1000, 1001, "12345"});
    sizes.push_back(file.size());
    mcap.Flush();
    sizes.push_back(file.size());
    mcap.Flush();
    mcap.AddMessage({raw, 8, 2000, 2000, std::string(600000, 'x')});
    sizes.push_back(file.size());
    mcap.AddMessage({raw, 9, 5000, 4000, std::string(600000, 'y')});
    sizes.push_back(file.size());
    EXPECT_THROW(mcap.AddMessage({3, 0, 0, 0, ""}), qltkit::Error);
    EXPECT_THROW(mcap.AddMessage({0, 0, 0, 0, ""}), qltkit::Error);
    mcap.AddMessage({raw, 10, 6000, 6000, "z"});
    mcap.Close();
    sizes.push_back(file.size());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{40, 40, 85, 85, 405, 405, 1200608, 1201456}));
    EXPECT_EQ(HashOf(file), 0x245A5B173077DD70U);

    WriteBytes("writer.mcap", file);
    const Contents read("writer.mcap");
    EXPECT_EQ(read.Problem(), "");
    ASSERT_EQ(read.items.size(), 5u);
    EXPECT_EQ(read.data[0] + read.data[1], "{}12345");
    EXPECT_EQ(read.items[0].logTimeNs, 3000u);
    EXPECT_EQ(read.items[1].publishTimeNs, 1001u);
    EXPECT_EQ(read.metadata.at("settings").at("e"), "f");
}
