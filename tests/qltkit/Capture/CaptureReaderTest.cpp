#include <qltkit/Capture/CaptureReader.h>

#include <qltkit/Error.h>

#include "CaptureFiles.h"

#include "Capture/McapFormat.h"

#include <random>

namespace
{

namespace Opcode = qltkit::McapOpcode;

/// The offset in the file at which the bytes of each report end.
std::vector<std::size_t> ReportEnds(const std::string& file, const Contents& contents)
{
    std::vector<std::size_t> ends;
    for (const std::string& data : contents.data)
    {
        if (data.size() == 64)
        {
            const std::size_t from = ends.empty() ? 0 : ends.back();
            ends.push_back(file.find(data, from) + 64);
        }
    }
    return ends;
}

/// Cuts the file shorter and shorter. Every report that is still whole must be read.
void ExpectWholeUpTo(const std::string& path, const std::vector<std::size_t>& cuts)
{
    const Contents whole(path);
    ASSERT_EQ(whole.Problem(), "");
    const std::vector<std::size_t> ends = ReportEnds(ReadBytes(path), whole);
    ASSERT_EQ(ends.size(), whole.reports);
    for (const std::size_t cut : cuts)
    {
        std::filesystem::resize_file(path, cut);
        const Contents read(path);
        const auto expected = std::upper_bound(ends.begin(), ends.end(), cut) - ends.begin();
        ASSERT_EQ(read.reports, static_cast<std::size_t>(expected))
            << "The file is cut at byte " << cut;
        ASSERT_TRUE(std::equal(read.data.begin(), read.data.end(), whole.data.begin())) << cut;
        ASSERT_EQ(read.problems.size(), 1u) << cut;
        ASSERT_NE(read.Problem().find("cut off"), std::string::npos) << read.Problem();
    }
}

std::string Record(std::uint8_t opcode, std::string_view content)
{
    std::string bytes;
    qltkit::AppendRecord(bytes, opcode, content);
    return bytes;
}

template <typename... Parts>
std::string File(const Parts&... parts)
{
    std::string bytes(qltkit::MCAP_MAGIC);
    bytes += Record(Opcode::HEADER, std::string(8, '\0'));
    (bytes += ... += parts);
    return bytes;
}

template <typename... Numbers>
std::string Content(Numbers... numbers)
{
    std::string bytes;
    (qltkit::AppendNumber(bytes, numbers), ...);
    return bytes;
}

std::string Chunk(std::uint64_t size, std::string_view compression, std::string_view records)
{
    std::string content = Content(std::uint64_t{0}, std::uint64_t{0}, size, std::uint32_t{0});
    qltkit::AppendString(content, compression);
    qltkit::AppendNumber(content, std::uint64_t{records.size()});
    return Record(Opcode::CHUNK, content + std::string(records));
}

/// The peak memory of the process in kilobytes. It is 0 when the system does not give it, and when
/// a sanitizer needs most of it.
std::size_t PeakKilobytes()
{
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
    {
        std::size_t peak = 0;
        if (word == "VmHWM:" && status >> peak)
        {
            return peak;
        }
    }
#endif
    return 0;
}

} // namespace

TEST(CaptureReaderTest, ASmallFileCutAtAnyByteIsReadToItsLastWholeReport)
{
    WriteCapture("small.mcap", 12, 5);
    std::vector<std::size_t> cuts(std::filesystem::file_size("small.mcap") - 1);
    std::generate(cuts.rbegin(), cuts.rend(), [n = std::size_t{0}]() mutable { return ++n; });
    ExpectWholeUpTo("small.mcap", cuts);
    WriteBytes("small.mcap", "");
    EXPECT_THROW(Contents("small.mcap"), qltkit::Error);
}

TEST(CaptureReaderTest, ALargeFileCutAnywhereIsReadToItsLastWholeReport)
{
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    WriteCapture("large.mcap", 15000, 15000); // one full chunk and one that is not full
    std::vector<std::size_t> cuts(QLT_RANDOM_CUTS);
    const std::size_t size = std::filesystem::file_size("large.mcap");
    std::generate(cuts.begin(), cuts.end(), [&] { return 1 + random() % (size - 1); });
    std::sort(cuts.rbegin(), cuts.rend());
    ExpectWholeUpTo("large.mcap", cuts);
}

TEST(CaptureReaderTest, AnyDamagedByteIsFoundAndCostsAtMostItsChunk)
{
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    WriteCapture("flip.mcap", 12, 4);
    const Contents whole("flip.mcap");
    const std::string bytes = ReadBytes("flip.mcap");
    std::size_t named = 0;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        SCOPED_TRACE("byte " + std::to_string(i) + ", seed " + std::to_string(seed));
        std::string damaged = bytes;
        damaged[i] = static_cast<char>(damaged[i] ^ static_cast<char>(1 + random() % 255));
        WriteBytes("flip.mcap", damaged);
        if (i < qltkit::MCAP_MAGIC.size())
        {
            EXPECT_THROW(Contents("flip.mcap"), qltkit::Error);
            continue;
        }
        const Contents read("flip.mcap");
        ASSERT_FALSE(read.problems.empty());
        named += read.problems.front().offset == i ? 1 : 0;
        if (read.Problem().find("one wrong byte") != std::string::npos)
        {
            EXPECT_EQ(read.problems.front().offset, i);
        }
        // Every report that is read equals a written one, and at most one chunk is missing.
        auto next = whole.data.begin();
        for (const std::string& data : read.data)
        {
            next = std::find(next, whole.data.end(), data);
            ASSERT_NE(next, whole.data.end());
            ++next;
        }
        ASSERT_GE(read.reports, 8u);
        kept += read.reports == 12 ? 1 : 0;
    }
    std::cout << "The reader found " << named << " of " << bytes.size()
              << " damaged bytes and lost no "
              << "report by " << kept << "\n";
    EXPECT_GT(named, bytes.size() * 9 / 10);
}

TEST(CaptureReaderTest, AbsurdFilesAreReadInBoundedMemory)
{
    constexpr std::uint64_t ABSURD = ~std::uint64_t{0} - 8;
    const bool measures = PeakKilobytes() != 0;
    const std::string large(std::size_t{measures ? 24U : 1U} << 20, '\x06');
    const std::string channel =
        Record(Opcode::CHANNEL, Content(std::uint16_t{1}, std::uint16_t{0}, std::uint32_t{0},
                                        std::uint32_t{0}, std::uint32_t{0}));
    std::string channels;
    for (std::uint32_t i = 0; i < 65536; ++i)
    {
        std::string content = Content(static_cast<std::uint16_t>(i), std::uint16_t{0});
        qltkit::AppendString(content, std::string(200, 't'));
        channels += Record(Opcode::CHANNEL, content + std::string(8, '\0'));
    }
    std::string metadata;
    for (std::uint32_t i = 0; i < 20000; ++i)
    {
        std::string content;
        qltkit::AppendString(content, std::to_string(i));
        qltkit::AppendMap(content, {{std::string(500, 'k'), "v"}});
        metadata += Record(Opcode::METADATA, content);
    }
    std::string deep = Content(std::uint16_t{1}, std::uint16_t{1}) + std::string(4, '\0');
    qltkit::AppendString(deep, "json");
    qltkit::AppendString(deep, "");
    std::string schema = Content(std::uint16_t{1});
    qltkit::AppendString(schema, "headset.Event");
    schema += std::string(8, '\0');
    const std::string json = Record(Opcode::SCHEMA, schema) + Record(Opcode::CHANNEL, deep);
    const auto event = [](std::string text)
    { return Record(Opcode::MESSAGE, Content(std::uint16_t{1}) + std::string(20, '\0') + text); };
    const std::string zeros(22, '\0');
    const std::string files[] = {
        File(std::string("\x05", 1) + Content(ABSURD)),
        File(std::string("\x06", 1) + Content(ABSURD), large),
        File(Record(Opcode::CHUNK,
                    Content(ABSURD, ABSURD, ABSURD, std::uint32_t{1}, std::uint32_t{0}, ABSURD))),
        File(Record(Opcode::CHUNK, Content(ABSURD, ABSURD, ABSURD, std::uint32_t{1},
                                           std::uint32_t{0xFFFFFFFF}, ABSURD))),
        File(Chunk(9, "", std::string("\x05", 1) + Content(ABSURD))),
        File(Chunk(large.size(), "", large)),
        File(large),
        File(Record(Opcode::MESSAGE, zeros + large)),
        File(channel, Record(Opcode::MESSAGE, "short")),
        File(Record(Opcode::CHANNEL, Content(std::uint16_t{1}, std::uint16_t{0}, 0xFFFFFFFFu))),
        File(Record(Opcode::METADATA, Content(std::uint32_t{0}, 0xFFFFFFF0u))),
        File(channels),
        File(metadata),
        File(json, event(std::string(1000000, '['))),
        File(json, event("{\"event\":\"a\",\"event\":\"b\",\"detail\":\"\"}")),
        File(json, event("{\"event\":\"\\u12\",\"detail\":\"\"}")),
        File(json, event("{\"event\":\"" + std::string(7 << 20, 'e') + "\",\"detail\":\"\"}")),
        File(std::string(1000, '\0')),
    };
    const std::size_t before = PeakKilobytes();
    for (std::size_t i = 0; i < std::size(files); ++i)
    {
        SCOPED_TRACE(i);
        WriteBytes("absurd.mcap", files[i]);
        qltkit::CaptureReader reader("absurd.mcap");
        qltkit::CaptureItem item;
        while (reader.Next(item))
        {
            EXPECT_EQ(item.kind, qltkit::CaptureItem::Kind::Other);
        }
        EXPECT_GT(reader.ProblemCount(), 0u);
        EXPECT_LE(reader.Problems().size(), 100u);
    }
    // The largest file has a little more than 24 MB.
    EXPECT_LE(PeakKilobytes(), before + (25 + 16) * 1024);
}

TEST(CaptureReaderTest, AFileThatIsNoCaptureIsRefusedWithASentence)
{
    const std::pair<std::string, std::string> cases[] = {
        {"a report as it was read, sixty-four bytes of it in a row, no more", "is no MCAP file"},
        {File(Chunk(100, "zstd", "\x28\xB5\x2F\xFD")), "compression 'zstd' at byte 25"},
        {File(Chunk(100, "lz4", "")), "compression 'lz4'"},
        {"", "is empty"},
    };
    for (const auto& [bytes, expected] : cases)
    {
        WriteBytes("refused.mcap", bytes);
        try
        {
            qltkit::CaptureReader reader("refused.mcap");
            ADD_FAILURE() << expected;
        }
        catch (const qltkit::Error& error)
        {
            EXPECT_NE(std::string(error.what()).find(expected), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(qltkit::CaptureReader("no such file.mcap"), qltkit::Error);
    EXPECT_THROW(qltkit::CaptureReader("."), qltkit::Error);
}
