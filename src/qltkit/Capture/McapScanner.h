#pragma once

#include "Capture/FileBytes.h"

#include <functional>

namespace qltkit
{

struct McapRecord
{
    std::uint8_t opcode = 0;
    std::string_view content; // valid until the next record is asked for
    std::uint64_t offset = 0; // the offset of its opcode in the file
};

/// Reads the records of an MCAP file from its beginning to its end, also when the file is truncated
/// or damaged. It trusts no length: a record must fit into the rest of its file or chunk.
///
/// A chunk with a correct CRC is trusted. After a malformed record the scan continues at the next
/// trusted chunk.
class McapScanner
{
public:
    /// The scanner calls this function for each damage. It passes the offset of the first lost or
    /// wrong byte, and a sentence.
    using Report = std::function<void(std::uint64_t, const std::string&)>;

    /// Throws Error when the file is no MCAP file. `file` must outlive this object.
    McapScanner(FileBytes& file, Report report);

    /// Reads the next header, schema, channel, message or metadata record, inside or outside a
    /// chunk. Returns false at the end. Throws Error at a compressed chunk.
    bool Next(McapRecord& record);

    /// The scan has read everything before this offset.
    std::uint64_t Offset() const { return mOffset; }

private:
    struct ChunkHeader;

    bool NextOfChunk(McapRecord& record);
    bool NextOfFile(McapRecord& record);
    bool IsIndexOfChunk();
    bool HidesChunk(std::uint8_t opcode, std::uint64_t length);
    bool IsFooter(std::uint8_t opcode, std::uint64_t length) const;
    bool TakeChunk(std::uint8_t opcode, std::uint64_t length);
    bool TakeDamagedChunk(const ChunkHeader& header);
    void RefuseCompression(const ChunkHeader& header);
    void Enter(std::uint64_t recordsSize);
    void ReportChunkCrc(const ChunkHeader& header, std::uint32_t found);
    bool IsWhole(const ChunkHeader& header, std::uint64_t size);
    std::uint32_t CrcOf(std::uint64_t begin, std::uint64_t size);
    void GoOnBehindDamage();
    std::uint64_t FindChunk(std::uint64_t begin, std::uint64_t end);
    void EndEarly();
    void EndData();
    void CheckSummary(std::uint64_t begin);
    void Damaged(std::uint64_t offset, const std::string& text);
    bool EndsWithMagic();

    FileBytes& mFile;
    const Report mReport;
    std::uint64_t mSearchBudget; // bytes that the search for misplaced chunks may still check
    std::uint64_t mOffset = 0;
    std::uint64_t mTrusted = 0; // everything before it has been read or is known to be damaged
    std::string mContent;       // the record's content, or all records of the chunk
    std::string_view mRecords;  // the remaining records of the chunk
    bool mBehindChunk = false;  // only indexes have followed the last chunk
    bool mDone = false;
    bool mIsDamaged = false;
    Crc32 mCrc; // CRC of the data section so far
};

} // namespace qltkit
