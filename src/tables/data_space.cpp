// Assigning, freeing and moving chunks, and the scratch file behind them.
#include "tables/data_space.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <new>

namespace qumel {

CQMDataSpace::CQMDataSpace(char const* directory)
    : m_directory(directory != nullptr ? directory : ""),
      m_fileNumber(static_cast<long>(std::time(nullptr))) {
  SetTypeTag(TypeTag::kDataSpace);
}

CQMDataSpace::~CQMDataSpace() { CloseFile(); }

// ---- chunks ----

CQMDataSpace::SQMChunk& CQMDataSpace::At(long chunk) const {
  auto const [block, place] = std::ldiv(chunk, kMasterListBlock);
  return m_masterList[static_cast<std::size_t>(block)][static_cast<std::size_t>(place)];
}

CQMDataSpace::SQMChunk* CQMDataSpace::FindInUse(long chunk) {
  return IsKnown(chunk) && !At(chunk).isFree ? &At(chunk) : nullptr;
}

long CQMDataSpace::AssignChunk(long size) {
  if (size < 1) return kNoChunk;
  std::scoped_lock const lock(m_mutex);
  long chunk = TakeFreeChunk(size);
  bool const isNew = chunk == kNoChunk;
  if (isNew) chunk = MakeRecord(size);
  if (chunk == kNoChunk) return kNoChunk;
  m_bytesInUse += size;
  if (Prepare(At(chunk), chunk, isNew)) return chunk;
  AddToFreeList(chunk);
  return kNoChunk;
}

/** Takes a free chunk of exactly this size, else the front part of the smallest larger one. */
long CQMDataSpace::TakeFreeChunk(long size) {
  auto const fitting = m_freeList.lower_bound(FreeKey{size, 0, 0});
  if (fitting == m_freeList.end()) return kNoChunk;
  auto const [foundSize, order, found] = *fitting;
  if (foundSize == size) {
    m_freeList.erase(fitting);
    At(found).isFree = false;
    return found;
  }
  long const chunk = AddRecord(size);
  if (chunk == kNoChunk) return kNoChunk;
  SQMChunk& rest = At(found);
  SQMChunk& front = At(chunk);
  front.offset = rest.offset;
  front.hasPlace = rest.hasPlace;
  rest.size -= size;
  rest.offset += size;
  auto node = m_freeList.extract(fitting);
  node.value() = FreeKey{rest.size, order, found};
  m_freeList.insert(std::move(node));
  return chunk;
}

/** A new chunk, with a place at the end of the scratch file when there is a file and it has room. */
long CQMDataSpace::MakeRecord(long size) {
  long const chunk = AddRecord(size);
  if (chunk == kNoChunk) return kNoChunk;
  SQMChunk& record = At(chunk);
  record.offset = m_endOfFile;
  record.hasPlace = HasFile() && size <= std::numeric_limits<std::int32_t>::max() - m_endOfFile;
  m_endOfFile += record.hasPlace ? static_cast<std::int32_t>(size) : 0;
  return chunk;
}

long CQMDataSpace::AddRecord(long size) {
  try {
    if (m_recordCount == static_cast<long>(m_masterList.size()) * kMasterListBlock)
      m_masterList.push_back(std::make_unique<SQMChunk[]>(kMasterListBlock));
  } catch (std::bad_alloc const&) {
    return kNoChunk;
  }
  At(m_recordCount).size = size;
  return m_recordCount++;
}

/** Readies a chunk for its new owner. */
bool CQMDataSpace::Prepare(SQMChunk& record, long chunk, bool isNew) {
  record.needsFlush = false;
  record.writeCount = 0;
  record.readCount = 0;
  try {
    record.memory = std::make_unique<std::byte[]>(static_cast<std::size_t>(record.size));
    if (!record.hasPlace) return true;
    AddToMemoryList(chunk);
  } catch (std::bad_alloc const&) {
    return false;
  }
  record.needsFlush = !WriteChunk(record);  // what could not be written must not be dropped later
  if (!isNew) record.writeCount = 0;
  return true;
}

std::byte* CQMDataSpace::FindChunk(long chunk) {
  std::scoped_lock const lock(m_mutex);
  return BringToRAM(chunk) ? At(chunk).memory.get() : nullptr;
}

void CQMDataSpace::FreeChunk(long chunk) {
  std::scoped_lock const lock(m_mutex);
  if (FindInUse(chunk) != nullptr) AddToFreeList(chunk);
}

void CQMDataSpace::AddToFreeList(long chunk) {
  SQMChunk& record = At(chunk);
  LeaveMemoryList(record);
  record.memory.reset();
  record.isFree = true;
  m_bytesInUse -= record.size;
  try {
    m_freeList.emplace(record.size, m_nextFreeOrder++, chunk);
  } catch (std::bad_alloc const&) {
    // It stays free, only never to be used again.
  }
}

void CQMDataSpace::SetNeedsFlush(long chunk) {
  std::scoped_lock const lock(m_mutex);
  if (SQMChunk* const record = FindInUse(chunk)) record->needsFlush = true;
}

// ---- between memory and file ----

void CQMDataSpace::AddToMemoryList(long chunk) {
  Evict(kMemoryLimit);
  SQMChunk& record = At(chunk);
  record.listed = m_memoryList.insert(m_memoryList.end(), chunk);
  record.isListed = true;
}

void CQMDataSpace::LeaveMemoryList(SQMChunk& record) {
  if (!record.isListed) return;
  m_memoryList.erase(record.listed);
  record.isListed = false;
}

long CQMDataSpace::ScramRAM() {
  std::scoped_lock const lock(m_mutex);
  return Evict(0);
}

/** Moves the chunks that were loaded first to the file until fewer than limit may still be moved. A chunk
 * that cannot be written stays. Answers how many went. */
long CQMDataSpace::Evict(long limit) {
  if (!HasFile()) return 0;
  long count = 0;
  for (auto next = m_memoryList.begin();
       next != m_memoryList.end() && static_cast<long>(m_memoryList.size()) >= limit;) {
    long const chunk = *next++;
    if (Evict(At(chunk))) ++count;
  }
  return count;
}

bool CQMDataSpace::Evict(SQMChunk& record) {
  if (record.needsFlush && !WriteChunk(record)) return false;
  LeaveMemoryList(record);
  record.memory.reset();
  return true;
}

bool CQMDataSpace::BringToRAM(long chunk) {
  SQMChunk* const record = FindInUse(chunk);
  if (record == nullptr) return false;
  if (record->memory != nullptr) return true;
  try {
    if (ReadChunk(*record)) AddToMemoryList(chunk);
  } catch (std::bad_alloc const&) {
  }
  return record->memory != nullptr;
}

bool CQMDataSpace::SeekTo(SQMChunk const& record) const {
  return HasFile() && std::fseek(m_file.get(), static_cast<long>(record.offset), SEEK_SET) == 0;
}

bool CQMDataSpace::WriteChunk(SQMChunk& record) {
  auto const size = static_cast<std::size_t>(record.size);
  if (!SeekTo(record)) return false;
  if (std::fwrite(record.memory.get(), 1, size, m_file.get()) != size) return false;
  ++record.writeCount;
  record.needsFlush = false;
  return true;
}

/** A chunk that cannot be read gets no memory: what stands in the file must not be overwritten with nothing.
 */
bool CQMDataSpace::ReadChunk(SQMChunk& record) {
  auto const size = static_cast<std::size_t>(record.size);
  if (!SeekTo(record)) return false;
  auto memory = std::make_unique<std::byte[]>(size);
  if (std::fread(memory.get(), 1, size, m_file.get()) != size) return false;
  record.memory = std::move(memory);
  ++record.readCount;
  return true;
}

// ---- the scratch file ----

bool CQMDataSpace::SetFileBacked(bool fileBacked) {
  std::scoped_lock const lock(m_mutex);
  if (m_recordCount > 0) return false;
  if (fileBacked) return OpenFile();
  CloseFile();
  return true;
}

bool CQMDataSpace::IsFileBacked() const {
  std::scoped_lock const lock(m_mutex);
  return HasFile();
}

bool CQMDataSpace::OpenFile() {
  if (HasFile()) return true;
  // Another space of the same second has the name already: the next number that is free will do.
  constexpr int kTries = 1000;
  for (int i = 0; i < kTries; ++i, ++m_fileNumber) {
    m_path = (m_directory.empty() ? "." : m_directory) + "/DS" + std::to_string(m_fileNumber) + ".qmd";
    m_file.reset(std::fopen(m_path.c_str(), "w+bx"));
    if (HasFile() || errno != EEXIST) break;
  }
  if (!HasFile()) return false;
  // Unbuffered, so that a write that fails is known before the chunk leaves the memory.
  std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
  return true;
}

void CQMDataSpace::CloseFile() {
  if (!HasFile()) return;
  m_file.reset();
  std::remove(m_path.c_str());
}

// ---- what is known ----

long CQMDataSpace::GetSize() const {
  std::scoped_lock const lock(m_mutex);
  return static_cast<long>(std::min<std::int64_t>(m_bytesInUse, std::numeric_limits<long>::max()));
}

long CQMDataSpace::GetChunkCount() const {
  std::scoped_lock const lock(m_mutex);
  return m_recordCount;
}

std::optional<SQMChunkInfo> CQMDataSpace::GetChunkInfo(long chunk) const {
  std::scoped_lock const lock(m_mutex);
  if (!IsKnown(chunk)) return std::nullopt;
  SQMChunk const& record = At(chunk);
  return SQMChunkInfo{static_cast<long>(record.offset),
                      record.size,
                      record.isFree,
                      record.memory != nullptr,
                      static_cast<long>(record.writeCount),
                      static_cast<long>(record.readCount)};
}

std::string CQMDataSpace::GetFilePath() const {
  std::scoped_lock const lock(m_mutex);
  return m_path;
}

}  // namespace qumel
