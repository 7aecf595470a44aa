#include "Capture/McapScanner.h"

#include <qltkit/Error.h>

#include "Capture/McapFormat.h"

#include <algorithm>

namespace qltkit
{

namespace
{

constexpr std::uint64_t NOWHERE = ~std::uint64_t{0};
constexpr std::uint64_t CHUNK_PREFIX_SIZE = MCAP_PREFIX_SIZE + MCAP_CHUNK_HEADER_SIZE;
constexpr std::uint64_t DATA_END_SIZE = MCAP_PREFIX_SIZE + 4;

bool IsData(std::uint8_t opcode)
{
    return opcode == McapOpcode::HEADER || opcode == McapOpcode::SCHEMA ||
           opcode == McapOpcode::CHANNEL || opcode == McapOpcode::MESSAGE ||
           opcode == McapOpcode::METADATA;
}

std::string At(std::uint64_t offset) { return " at byte " + std::to_string(offset); }

/// The offset of the damage in the `size` bytes from `begin`, as far as the CRC can show it. The
/// CRC is stored at `crcOffset`.
std::uint64_t DamageOffset(std::uint32_t found, std::uint32_t expected, std::uint64_t begin,
                           std::uint64_t size, std::uint64_t crcOffset)
{
    const auto byte = DamagedByte(found, expected, size);
    if (!byte)
    {
        return NOWHERE;
    }
    return *byte < size ? begin + *byte : crcOffset + (*byte - size);
}

std::string OneByte(std::uint64_t offset)
{
    return offset == NOWHERE ? " (more than one byte)" : " (one wrong byte," + At(offset) + ")";
}

} // namespace

/// A chunk's prefix and the fixed part of its content, read as if it was not compressed. It
/// contains the length of the records three times.
struct McapScanner::ChunkHeader
{
    ChunkHeader(FileBytes& file, std::uint64_t recordOffset)
        : offset(recordOffset)
        , left(file.Size() - recordOffset)
    {
        if (left < CHUNK_PREFIX_SIZE)
        {
            return;
        }
        std::string_view bytes = file.Block(offset);
        std::string copy;
        if (bytes.size() < CHUNK_PREFIX_SIZE)
        {
            file.Read(offset, CHUNK_PREFIX_SIZE, copy);
            bytes = copy;
        }
        ByteReader reader(bytes);
        opcode = reader.Take<std::uint8_t>();
        sizes[0] = reader.Take<std::uint64_t>() - MCAP_CHUNK_HEADER_SIZE;
        reader.TakeBytes(16); // the times
        sizes[1] = reader.Take<std::uint64_t>();
        crc = reader.Take<std::uint32_t>();
        compressionSize = reader.Take<std::uint32_t>();
        sizes[2] = reader.Take<std::uint64_t>();
    }

    std::uint64_t Begin() const { return offset + CHUNK_PREFIX_SIZE; }

    bool Fits(std::uint64_t size) const
    {
        return left >= CHUNK_PREFIX_SIZE && size <= left - CHUNK_PREFIX_SIZE;
    }

    bool Agrees() const
    {
        return left >= CHUNK_PREFIX_SIZE && compressionSize == 0 && sizes[0] == sizes[1] &&
               sizes[1] == sizes[2];
    }

    std::uint64_t offset;
    std::uint64_t left;
    std::uint8_t opcode = 0;
    std::uint64_t sizes[3] = {};
    std::uint32_t crc = 0; // 0 when the writer stored none
    std::uint32_t compressionSize = 0;
};

McapScanner::McapScanner(FileBytes& file, Report report)
    : mFile(file)
    , mReport(std::move(report))
    , mSearchBudget(8 * file.Size())
{
    std::string magic;
    mFile.Read(0, std::min<std::uint64_t>(mFile.Size(), MCAP_MAGIC.size()), magic);
    if (magic.empty())
    {
        throw Error(mFile.Name() + " is empty");
    }
    if (magic != MCAP_MAGIC.substr(0, magic.size()))
    {
        throw Error(mFile.Name() + " is no MCAP file: it does not begin with the format's magic");
    }
    mOffset = magic.size();
    mTrusted = mOffset;
    mCrc.Update(magic);
}

bool McapScanner::Next(McapRecord& record)
{
    while (true)
    {
        if (NextOfChunk(record) || NextOfFile(record))
        {
            return true;
        }
        if (mDone && mRecords.empty())
        {
            return false;
        }
    }
}

bool McapScanner::NextOfChunk(McapRecord& record)
{
    while (!mRecords.empty())
    {
        const std::uint64_t offset = mOffset - mRecords.size();
        ByteReader reader(mRecords);
        record.opcode = reader.Take<std::uint8_t>();
        record.content = reader.TakeBytes(reader.Take<std::uint64_t>());
        record.offset = offset;
        if (!reader.Whole() || record.opcode == 0)
        {
            mRecords = {};
            if (!mDone) // a truncated last record has been reported already
            {
                Damaged(offset, "a chunk is malformed" + At(offset));
            }
            return false;
        }
        mRecords = reader.Rest();
        if (IsData(record.opcode))
        {
            return true;
        }
    }
    return false;
}

bool McapScanner::NextOfFile(McapRecord& record)
{
    if (mDone)
    {
        return false;
    }
    const std::uint64_t left = mFile.Size() - mOffset;
    if (left < MCAP_PREFIX_SIZE)
    {
        GoOnBehindDamage();
        return false;
    }
    std::string prefix;
    mFile.Read(mOffset, MCAP_PREFIX_SIZE, prefix);
    const auto opcode = static_cast<std::uint8_t>(prefix[0]);
    const auto length = NumberAt<std::uint64_t>(prefix.data() + 1);
    if (opcode == McapOpcode::DATA_END && length == DATA_END_SIZE - MCAP_PREFIX_SIZE &&
        left >= DATA_END_SIZE)
    {
        EndData();
        return false;
    }
    if (TakeChunk(opcode, length))
    {
        return false;
    }
    if (opcode == 0 || opcode == McapOpcode::CHUNK || length > left - MCAP_PREFIX_SIZE ||
        IsFooter(opcode, length) || HidesChunk(opcode, length))
    {
        GoOnBehindDamage();
        return false;
    }
    const std::uint64_t offset = mOffset;
    mOffset += MCAP_PREFIX_SIZE + length;
    if (!mIsDamaged)
    {
        mFile.AddTo(mCrc, offset, mOffset);
    }
    if (!IsData(opcode))
    {
        return false;
    }
    mFile.Read(offset + MCAP_PREFIX_SIZE, length, mContent);
    record = {opcode, mContent, offset};
    return !IsIndexOfChunk();
}

/// True when the record in mContent is an index of the chunk before it. The test ignores the
/// opcode, because a damaged index must not pass for a message. The CRC of all data detects the
/// damage.
bool McapScanner::IsIndexOfChunk()
{
    ByteReader reader(mContent);
    reader.TakeBytes(2); // the channel
    const std::size_t size = reader.TakeString().size();
    mBehindChunk = mBehindChunk && reader.Whole() && reader.Rest().empty() && size % 16 == 0;
    return mBehindChunk;
}

/// True when the record at mOffset contains a chunk. The length of such a record is wrong.
/// Messages, attachments and foreign records may contain any bytes, so they are not tested.
bool McapScanner::HidesChunk(std::uint8_t opcode, std::uint64_t length)
{
    const bool isPlain = opcode != McapOpcode::MESSAGE && opcode != McapOpcode::ATTACHMENT &&
                         opcode <= McapOpcode::DATA_END;
    const std::uint64_t begin = mOffset + MCAP_PREFIX_SIZE;
    return isPlain && FindChunk(begin, begin + length) != NOWHERE;
}

/// True for a footer. The scan reaches it only when the DataEnd record before it is missing.
bool McapScanner::IsFooter(std::uint8_t opcode, std::uint64_t length) const
{
    return opcode == McapOpcode::FOOTER && length == MCAP_FOOTER_CONTENT_SIZE &&
           mFile.Size() - mOffset == MCAP_TAIL_SIZE;
}

/// Returns true when the record is a chunk and has been processed.
bool McapScanner::TakeChunk(std::uint8_t opcode, std::uint64_t length)
{
    const bool named = opcode == McapOpcode::CHUNK;
    if (!named && length < MCAP_CHUNK_HEADER_SIZE)
    {
        return false;
    }
    const ChunkHeader header(mFile, mOffset);
    const std::uint64_t size = header.sizes[0];
    if (!header.Agrees())
    {
        return named && TakeDamagedChunk(header);
    }
    if (!header.Fits(size) || (!named && header.crc == 0))
    {
        return false;
    }
    if (!named)
    {
        // A record with a wrong opcode is a chunk when everything else in it matches a chunk.
        if (CrcOf(header.Begin(), size) != header.crc)
        {
            return false;
        }
        Damaged(mOffset, "a chunk's opcode is damaged" + At(mOffset) + "; its records are whole");
    }
    mFile.Read(header.Begin(), size, mContent);
    const std::uint32_t found = header.crc == 0 ? 0 : Crc32Of(mContent);
    if (found != header.crc)
    {
        ReportChunkCrc(header, found);
        mOffset = header.Begin() + size;
        mTrusted = mOffset;
        return true;
    }
    Enter(size);
    return true;
}

/// Handles a chunk whose header contradicts itself. The CRC finds its records.
bool McapScanner::TakeDamagedChunk(const ChunkHeader& header)
{
    for (const std::uint64_t size : header.sizes)
    {
        if (IsWhole(header, size))
        {
            Damaged(mOffset,
                    "a chunk's header is damaged" + At(mOffset) + "; its records are whole");
            mFile.Read(header.Begin(), size, mContent);
            Enter(size);
            return true;
        }
    }
    RefuseCompression(header);
    return false;
}

void McapScanner::RefuseCompression(const ChunkHeader& header)
{
    const std::uint64_t nameOffset = header.offset + MCAP_PREFIX_SIZE + 32;
    if (header.compressionSize == 0 || header.compressionSize > 32 ||
        nameOffset + header.compressionSize + 8 > mFile.Size())
    {
        return;
    }
    std::string name;
    mFile.Read(nameOffset, header.compressionSize + 8, name);
    const auto recordsSize = NumberAt<std::uint64_t>(name.data() + header.compressionSize);
    name.resize(header.compressionSize);
    const bool isName =
        std::all_of(name.begin(), name.end(),
                    [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); });
    if (isName && recordsSize == header.sizes[0] - header.compressionSize)
    {
        throw Error(mFile.Name() + " has a chunk with the compression '" + name + "'" +
                    At(header.offset) + ", and only uncompressed chunks can be read");
    }
}

/// Enters the chunk at mOffset. Its records are in mContent.
void McapScanner::Enter(std::uint64_t recordsSize)
{
    const std::uint64_t end = mOffset + CHUNK_PREFIX_SIZE + recordsSize;
    if (!mIsDamaged)
    {
        mFile.AddTo(mCrc, mOffset, mOffset + CHUNK_PREFIX_SIZE);
        mCrc.Update(mContent);
    }
    mRecords = mContent;
    mBehindChunk = true;
    mOffset = end;
    mTrusted = end;
}

void McapScanner::ReportChunkCrc(const ChunkHeader& header, std::uint32_t found)
{
    const std::uint64_t crcOffset = header.offset + MCAP_PREFIX_SIZE + 24;
    const std::uint64_t damage =
        DamageOffset(found, header.crc, header.Begin(), header.sizes[0], crcOffset);
    Damaged(damage == NOWHERE ? header.offset : damage, "the CRC of the chunk" + At(header.offset) +
                                                            " is wrong" + OneByte(damage) +
                                                            "; its records are left out");
}

/// True when the CRC shows that the chunk has `size` bytes of records. A forged file may contain
/// many candidates, so a budget limits the checked bytes to a few times the size of the file.
bool McapScanner::IsWhole(const ChunkHeader& header, std::uint64_t size)
{
    if (header.crc == 0 || !header.Fits(size) || size > mSearchBudget)
    {
        return false;
    }
    mSearchBudget -= size;
    return CrcOf(header.Begin(), size) == header.crc;
}

std::uint32_t McapScanner::CrcOf(std::uint64_t begin, std::uint64_t size)
{
    Crc32 crc;
    mFile.AddTo(crc, begin, begin + size);
    return crc.Value();
}

/// Continues after malformed bytes at mOffset. A wrong length may have skipped whole chunks, so the
/// search for the next chunk starts at the last trusted place.
void McapScanner::GoOnBehindDamage()
{
    const std::uint64_t damage = mOffset;
    const std::uint64_t chunk = FindChunk(mTrusted, mFile.Size());
    if (chunk == NOWHERE)
    {
        EndEarly();
        return;
    }
    const std::uint64_t begin = std::min(damage, chunk);
    Damaged(begin, "a record is damaged" + At(damage) + "; reading goes on" + At(chunk));
    mOffset = chunk;
    mTrusted = chunk;
}

/// Finds the first whole chunk that begins between `begin` and `end`.
std::uint64_t McapScanner::FindChunk(std::uint64_t begin, std::uint64_t end)
{
    for (std::uint64_t offset = begin; offset < end;)
    {
        const std::string_view block = mFile.Block(offset);
        const std::size_t found = block.find(static_cast<char>(McapOpcode::CHUNK));
        if (found == std::string_view::npos)
        {
            offset += block.size();
            continue;
        }
        offset += found;
        const ChunkHeader header(mFile, offset);
        if (offset < end && header.Agrees() && IsWhole(header, header.sizes[0]))
        {
            return offset;
        }
        ++offset;
    }
    return NOWHERE;
}

/// Ends the scan when no whole chunk is left: the file is truncated here, or damaged up to its end.
void McapScanner::EndEarly()
{
    mDone = true;
    const ChunkHeader header(mFile, mOffset);
    const std::string size = std::to_string(mFile.Size());
    if (EndsWithMagic())
    {
        Damaged(mOffset, "the file is damaged from byte " + std::to_string(mOffset) + " on");
    }
    else if (header.opcode == McapOpcode::CHUNK && header.Agrees())
    {
        const std::uint64_t recordsSize = header.left - CHUNK_PREFIX_SIZE;
        mFile.Read(header.Begin(), recordsSize, mContent);
        mRecords = mContent;
        Damaged(mFile.Size(), "the file is cut off after " + size + " bytes, inside the chunk" +
                                  At(mOffset) + "; its whole records are read without a check");
        mOffset = mFile.Size();
        return;
    }
    else
    {
        Damaged(mOffset, "the file of " + size + " bytes is cut off or damaged after its last " +
                             "whole record, which ends" + At(mOffset));
    }
    mOffset = mFile.Size();
}

void McapScanner::EndData()
{
    mDone = true;
    std::string record;
    mFile.Read(mOffset, DATA_END_SIZE, record);
    const auto expected = NumberAt<std::uint32_t>(record.data() + MCAP_PREFIX_SIZE);
    if (!mIsDamaged && expected != 0 && expected != mCrc.Value())
    {
        const std::uint64_t damage =
            DamageOffset(mCrc.Value(), expected, 0, mOffset, mOffset + MCAP_PREFIX_SIZE);
        Damaged(damage == NOWHERE ? 0 : damage, "the CRC of all data is wrong" + OneByte(damage) +
                                                    ", outside of the chunks' records");
    }
    CheckSummary(mOffset + DATA_END_SIZE);
    mOffset = mFile.Size();
}

void McapScanner::CheckSummary(std::uint64_t begin)
{
    const std::uint64_t size = mFile.Size();
    if (size - begin < MCAP_TAIL_SIZE || !EndsWithMagic())
    {
        Damaged(size, "the file is cut off or damaged in its summary, which begins" + At(begin) +
                          "; all data is there");
        return;
    }
    std::string footer;
    mFile.Read(size - MCAP_TAIL_SIZE, MCAP_TAIL_SIZE, footer);
    const std::uint64_t crcOffset = size - MCAP_MAGIC.size() - 4;
    const auto expected = NumberAt<std::uint32_t>(footer.data() + (MCAP_TAIL_SIZE - 12));
    const std::uint32_t found = CrcOf(begin, crcOffset - begin);
    if (expected != 0 && expected != found)
    {
        const std::uint64_t damage =
            DamageOffset(found, expected, begin, crcOffset - begin, crcOffset);
        Damaged(damage == NOWHERE ? begin : damage,
                "the CRC of the summary is wrong" + OneByte(damage) + "; all data is there");
    }
}

void McapScanner::Damaged(std::uint64_t offset, const std::string& text)
{
    mIsDamaged = true;
    mReport(offset, text);
}

bool McapScanner::EndsWithMagic()
{
    if (mFile.Size() < 2 * MCAP_MAGIC.size()) // the magic at the beginning does not count
    {
        return false;
    }
    std::string magic;
    mFile.Read(mFile.Size() - MCAP_MAGIC.size(), MCAP_MAGIC.size(), magic);
    return magic == MCAP_MAGIC;
}

} // namespace qltkit
