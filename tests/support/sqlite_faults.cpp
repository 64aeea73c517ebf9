#include "support/sqlite_faults.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace vellum250::support {
namespace {

SqliteFaults armed;
std::atomic<int64_t> openFiles = 0;

bool Hits(SqliteFault fault, const char* operation) {
  if (armed.fault != fault) return false;
  ++armed.operations;
  if (armed.operations < armed.at || armed.operations >= armed.at + armed.times) return false;
  ++armed.injected;
  armed.in = operation;
  return true;
}

// ---- Files --------------------------------------------------------------------------------------

sqlite3_vfs* underlying = nullptr;

// The file of the default VFS stands behind it in the same memory.
struct File {
  sqlite3_file base;
  sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* RealOf(sqlite3_file* file) { return reinterpret_cast<File*>(file)->Real(); }
const sqlite3_io_methods& MethodsOf(sqlite3_file* file) { return *RealOf(file)->pMethods; }

int Close(sqlite3_file* file) {
  --openFiles;
  return MethodsOf(file).xClose(RealOf(file));
}

int Read(sqlite3_file* file, void* to, int count, sqlite3_int64 from) {
  if (Hits(SqliteFault::ReadError, "read")) return SQLITE_IOERR_READ;
  const int code = MethodsOf(file).xRead(RealOf(file), to, count, from);
  if (code != SQLITE_OK || !Hits(SqliteFault::ShortRead, "read")) return code;
  std::memset(static_cast<char*>(to) + count / 2, 0, static_cast<size_t>(count - count / 2));
  return SQLITE_IOERR_SHORT_READ;
}

int Write(sqlite3_file* file, const void* from, int count, sqlite3_int64 to) {
  if (Hits(SqliteFault::DiskFull, "write")) return SQLITE_FULL;
  if (Hits(SqliteFault::WriteError, "write")) return SQLITE_IOERR_WRITE;
  if (Hits(SqliteFault::ShortWrite, "write")) {
    MethodsOf(file).xWrite(RealOf(file), from, count / 2, to);
    return SQLITE_FULL;
  }
  return MethodsOf(file).xWrite(RealOf(file), from, count, to);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  if (Hits(SqliteFault::DiskFull, "truncate")) return SQLITE_FULL;
  if (Hits(SqliteFault::WriteError, "truncate")) return SQLITE_IOERR_TRUNCATE;
  return MethodsOf(file).xTruncate(RealOf(file), size);
}

int Sync(sqlite3_file* file, int flags) {
  if (Hits(SqliteFault::SyncError, "sync")) return SQLITE_IOERR_FSYNC;
  return armed.syncs ? MethodsOf(file).xSync(RealOf(file), flags) : SQLITE_OK;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
  if (Hits(SqliteFault::ReadError, "size")) return SQLITE_IOERR_FSTAT;
  return MethodsOf(file).xFileSize(RealOf(file), size);
}

int Lock(sqlite3_file* file, int level) {
  if (Hits(SqliteFault::Locked, "lock")) return SQLITE_BUSY;
  return MethodsOf(file).xLock(RealOf(file), level);
}

int Unlock(sqlite3_file* file, int level) { return MethodsOf(file).xUnlock(RealOf(file), level); }

int CheckReservedLock(sqlite3_file* file, int* held) {
  return MethodsOf(file).xCheckReservedLock(RealOf(file), held);
}

int FileControl(sqlite3_file* file, int operation, void* argument) {
  return MethodsOf(file).xFileControl(RealOf(file), operation, argument);
}

int SectorSize(sqlite3_file* file) { return MethodsOf(file).xSectorSize(RealOf(file)); }

int Characteristics(sqlite3_file* file) {
  return MethodsOf(file).xDeviceCharacteristics(RealOf(file));
}

int MapShared(sqlite3_file* file, int page, int size, int extend, void volatile** map) {
  if (Hits(SqliteFault::ReadError, "map")) return SQLITE_IOERR_SHMMAP;
  if (extend != 0 && Hits(SqliteFault::DiskFull, "map")) return SQLITE_IOERR_SHMSIZE;
  if (Hits(SqliteFault::CannotOpen, "map")) return SQLITE_CANTOPEN;
  return MethodsOf(file).xShmMap(RealOf(file), page, size, extend, map);
}

int LockShared(sqlite3_file* file, int offset, int count, int flags) {
  const bool locks = (flags & SQLITE_SHM_LOCK) != 0;
  if (locks && Hits(SqliteFault::Locked, "shared lock")) return SQLITE_BUSY;
  return MethodsOf(file).xShmLock(RealOf(file), offset, count, flags);
}

void Barrier(sqlite3_file* file) { MethodsOf(file).xShmBarrier(RealOf(file)); }

int UnmapShared(sqlite3_file* file, int remove) {
  return MethodsOf(file).xShmUnmap(RealOf(file), remove);
}

constexpr sqlite3_io_methods kMethods = {2,
                                         Close,
                                         Read,
                                         Write,
                                         Truncate,
                                         Sync,
                                         FileSize,
                                         Lock,
                                         Unlock,
                                         CheckReservedLock,
                                         FileControl,
                                         SectorSize,
                                         Characteristics,
                                         MapShared,
                                         LockShared,
                                         Barrier,
                                         UnmapShared,
                                         nullptr,
                                         nullptr};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* given) {
  file->pMethods = nullptr;
  if (Hits(SqliteFault::CannotOpen, "open")) return SQLITE_CANTOPEN;
  const int code = underlying->xOpen(underlying, name, RealOf(file), flags, given);
  // Closed by SQLite whenever it has methods, opened or not.
  if (RealOf(file)->pMethods != nullptr) {
    file->pMethods = &kMethods;
    ++openFiles;
  }
  return code;
}

int Delete(sqlite3_vfs*, const char* name, int sync) {
  if (Hits(SqliteFault::CannotOpen, "delete")) return SQLITE_IOERR_DELETE;
  return underlying->xDelete(underlying, name, armed.syncs ? sync : 0);
}

int Access(sqlite3_vfs*, const char* name, int flags, int* result) {
  if (Hits(SqliteFault::CannotOpen, "access")) return SQLITE_IOERR_ACCESS;
  return underlying->xAccess(underlying, name, flags, result);
}

int FullPathname(sqlite3_vfs*, const char* name, int size, char* out) {
  if (Hits(SqliteFault::CannotOpen, "path")) return SQLITE_CANTOPEN;
  return underlying->xFullPathname(underlying, name, size, out);
}

sqlite3_vfs vfs;

// ---- Memory -------------------------------------------------------------------------------------

sqlite3_mem_methods memory;

void* Allocate(int size) {
  return Hits(SqliteFault::NoMemory, "allocation") ? nullptr : memory.xMalloc(size);
}

void* Reallocate(void* block, int size) {
  return Hits(SqliteFault::NoMemory, "reallocation") ? nullptr : memory.xRealloc(block, size);
}

// Before anything can have opened a database.
[[maybe_unused]] const bool installed = [] {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &memory);
  sqlite3_mem_methods failing = memory;
  failing.xMalloc = Allocate;
  failing.xRealloc = Reallocate;
  if (sqlite3_config(SQLITE_CONFIG_MALLOC, &failing) != SQLITE_OK) std::abort();
  underlying = sqlite3_vfs_find(nullptr);
  vfs = *underlying;
  vfs.zName = "faults";
  vfs.szOsFile = static_cast<int>(sizeof(File)) + underlying->szOsFile;
  vfs.xOpen = Open;
  vfs.xDelete = Delete;
  vfs.xAccess = Access;
  vfs.xFullPathname = FullPathname;
  if (sqlite3_vfs_register(&vfs, 1) != SQLITE_OK) std::abort();
  return true;
}();

}  // namespace

SqliteFaults& ArmedFaults() { return armed; }
int64_t OpenSqliteFiles() { return openFiles; }

// operator new cannot stand in a namespace.
void* AllocateNew(std::size_t size) {
  if (!Hits(SqliteFault::NoNewMemory, "new")) {
    if (void* block = std::malloc(std::max<std::size_t>(size, 1))) return block;
  }
  throw std::bad_alloc();
}

}  // namespace vellum250::support

void* operator new(std::size_t size) { return vellum250::support::AllocateNew(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
