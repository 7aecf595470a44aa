// Walks through the records of an MCAP file from its beginning to its end, of a cut or damaged one,
// too. It trusts no length: a record must fit into what is left of its file or chunk.
//
// A chunk whose CRC is right is trusted. Behind a record that makes no sense, the walk goes on at
// the next chunk that can be trusted.
#pragma once

#include "Capture/FileBytes.h"

#include <functional>

namespace qltkit
{

struct McapRecord
{
    std::uint8_t opcode = 0;
    std::string_view content; // valid until the next record is asked for
    std::uint64_t offset = 0; // of its opcode in the file
};

class McapScanner
{
public:
    /// Hears of damage: the first byte that is lost or wrong, and a sentence.
    using Report = std::function<void(std::uint64_t, const std::string&)>;

    /// Error when the file is none of MCAP. `file` must outlive this.
    McapScanner(FileBytes& file, Report report);

    /// The next header, schema, channel, message or metadata record, from inside a chunk or not;
    /// false at the end. Error when it meets a compressed chunk.
    bool Next(McapRecord& record);

    /// Everything before it has been looked at.
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
    std::uint64_t mSearchBudget; // bytes that may still be checked for chunks out of place
    std::uint64_t mOffset = 0;
    std::uint64_t mTrusted = 0; // everything before it is read, or known to be damaged
    std::string mContent;       // of the record, or the records of the chunk
    std::string_view mRecords;  // of the chunk, those that are left
    bool mBehindChunk = false;  // nothing but indexes has come since
    bool mDone = false;
    bool mIsDamaged = false;
    Crc32 mCrc; // of the data section so far
};

} // namespace qltkit
