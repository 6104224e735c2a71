// A store of memory chunks that are reused after they are freed and may spill to a scratch file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "objects/object.h"

namespace qumel {

/** What is known of one chunk. Offsets and sizes are in bytes. */
struct SQMChunkInfo {
  long offset;  // of its place in the scratch file
  long size;
  bool isFree;
  bool isInMemory;
  long writeCount;
  long readCount;
};

/** By default every chunk stays in memory at one address until it is freed. A file-backed space keeps at most
 *  kMemoryLimit chunks in memory and moves the others to a scratch file, so the address of a chunk holds only
 * until the next chunk is looked for. Each operation is safe against other threads; what is done through the
 * addresses of a file-backed space is not, so such a space serves one thread. */
class CQMDataSpace : public CQMObject {
 public:
  static constexpr long kMemoryLimit = 128;
  static constexpr long kMasterListBlock = 4;  // records that are made at a time
  static constexpr long kNoChunk = -1;

  /** directory: where the scratch file goes; null or empty is the working folder. No file is made before the
   * space is made file-backed. */
  explicit CQMDataSpace(char const* directory = nullptr);
  ~CQMDataSpace() override;

  /** Opens or drops the scratch file. False, and nothing changes, once a chunk has been assigned or when the
   * file cannot be made. */
  bool SetFileBacked(bool fileBacked);
  bool IsFileBacked() const;

  /** A chunk of size bytes, all 0; kNoChunk for a size below 1 or without memory. */
  long AssignChunk(long size);
  /** The chunk's memory, read from the file when it is not there; null for a free or unknown chunk or when it
   * cannot be read. */
  std::byte* FindChunk(long chunk);
  void FreeChunk(long chunk);
  /** Tells that the chunk's memory was changed. */
  void SetNeedsFlush(long chunk);
  /** Moves every chunk to the file that can be moved; returns how many went. */
  long ScramRAM();

  /** The bytes of all chunks in use. */
  long GetSize() const;
  /** Chunk records ever made, free ones included. */
  long GetChunkCount() const;
  std::optional<SQMChunkInfo> GetChunkInfo(long chunk) const;
  /** Where the scratch file is or was; empty before there was one. */
  std::string GetFilePath() const;

 private:
  struct SQMChunk {
    long size = 0;
    std::int64_t offset = 0;
    std::unique_ptr<std::byte[]> memory;
    std::list<long>::iterator listed;  // its entry in the memory list
    std::uint32_t writeCount = 0;
    std::uint32_t readCount = 0;
    bool hasPlace = false;  // in the scratch file, at offset
    bool isFree = false;
    bool needsFlush = false;
    bool isListed = false;
  };
  struct SQMFileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  /** Free chunks by size; of one size, by the order in which they were freed. */
  using FreeKey = std::tuple<long, std::uint64_t, long>;  // size, order, chunk

  // All of these expect the lock to be held.
  SQMChunk& At(long chunk) const;
  bool IsKnown(long chunk) const { return chunk >= 0 && chunk < m_recordCount; }
  SQMChunk* FindInUse(long chunk);
  bool HasFile() const { return m_file != nullptr; }
  long TakeFreeChunk(long size);
  long MakeRecord(long size);
  /** kNoChunk without memory. */
  long AddRecord(long size);
  bool Prepare(SQMChunk& record, long chunk, bool isNew);
  void AddToFreeList(long chunk);
  void AddToMemoryList(long chunk);
  void LeaveMemoryList(SQMChunk& record);
  long Evict(long limit);
  bool Evict(SQMChunk& record);
  bool SeekTo(SQMChunk const& record) const;
  bool WriteChunk(SQMChunk& record);
  bool ReadChunk(SQMChunk& record);
  bool BringToRAM(long chunk);
  bool OpenFile();
  void CloseFile();

  mutable std::mutex m_mutex;
  std::unique_ptr<std::FILE, SQMFileCloser> m_file;
  std::string m_directory;
  long m_fileNumber;  // names the scratch file: the second of creation, or the next number that is free
  std::string m_path;
  std::int32_t m_endOfFile = 0;
  std::vector<std::unique_ptr<SQMChunk[]>> m_masterList;  // blocks of kMasterListBlock records
  long m_recordCount = 0;
  std::set<FreeKey> m_freeList;
  std::uint64_t m_nextFreeOrder = 0;
  std::list<long> m_memoryList;  // chunks that may be moved to the file, first loaded first
  std::int64_t m_bytesInUse = 0;
};

}  // namespace qumel
