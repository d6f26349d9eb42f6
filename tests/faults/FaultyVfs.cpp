#include "faults/FaultyVfs.h"

#include <sqlite3.h>

namespace {

using Call = FaultyVfs::Call;

struct Fault {
    Call Kind = FaultyVfs::kCallCount;
    int Position = 0;
    bool Lasting = false;
    int Calls = 0;
    bool Failed = false;
};

Fault gFault;
sqlite3_vfs gVfs;
sqlite3_io_methods gMethods;

bool Fails(Call kind) {
    if (kind == FaultyVfs::kCallCount || gFault.Kind != kind) {
        return false;
    }
    const int call = ++gFault.Calls;
    const bool fails = gFault.Position != 0 &&
                       (gFault.Lasting ? call >= gFault.Position : call == gFault.Position);
    gFault.Failed = gFault.Failed || fails;
    return fails;
}

sqlite3_vfs* Base() {
    return static_cast<sqlite3_vfs*>(gVfs.pAppData);
}

// The platform's file lies right behind ours.
sqlite3_file* Real(sqlite3_file* file) {
    return file + 1;
}

// One function of the interface: what the platform's does, or the error when it is to fail.
template <auto Method, Call kind = FaultyVfs::kCallCount, int error = SQLITE_OK, typename... A>
int OfFile(sqlite3_file* file, A... arguments) {
    return Fails(kind) ? error : (Real(file)->pMethods->*Method)(Real(file), arguments...);
}
template <auto Method, Call kind = FaultyVfs::kCallCount, int error = SQLITE_OK, typename... A>
int OfVfs(sqlite3_vfs*, A... arguments) {
    return Fails(kind) ? error : (Base()->*Method)(Base(), arguments...);
}

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    if (Fails(FaultyVfs::kFullWrite)) {
        return SQLITE_FULL;
    }
    const bool fails = Fails(FaultyVfs::kWrite);
    const int written = fails ? count / 2 : count;
    const int result = Real(file)->pMethods->xWrite(Real(file), bytes, written, offset);
    return fails ? SQLITE_IOERR_WRITE : result;
}

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    file->pMethods = nullptr;
    if (Fails(FaultyVfs::kOpen)) {
        return SQLITE_CANTOPEN;
    }
    const int result = Base()->xOpen(Base(), name, Real(file), flags, outFlags);
    file->pMethods = Real(file)->pMethods == nullptr ? nullptr : &gMethods;
    return result;
}

}  // namespace

void FaultyVfs::Install() {
    using Io = sqlite3_io_methods;
    gMethods.iVersion = 1;
    gMethods.xClose = OfFile<&Io::xClose>;
    gMethods.xRead = OfFile<&Io::xRead, kRead, SQLITE_IOERR_READ>;
    gMethods.xWrite = Write;
    gMethods.xTruncate = OfFile<&Io::xTruncate, kTruncate, SQLITE_IOERR_TRUNCATE>;
    gMethods.xSync = OfFile<&Io::xSync, kSync, SQLITE_IOERR_FSYNC>;
    gMethods.xFileSize = OfFile<&Io::xFileSize>;
    gMethods.xLock = OfFile<&Io::xLock, kLock, SQLITE_IOERR_LOCK>;
    gMethods.xUnlock = OfFile<&Io::xUnlock>;
    gMethods.xCheckReservedLock = OfFile<&Io::xCheckReservedLock>;
    gMethods.xFileControl = OfFile<&Io::xFileControl>;
    gMethods.xSectorSize = OfFile<&Io::xSectorSize>;
    gMethods.xDeviceCharacteristics = OfFile<&Io::xDeviceCharacteristics>;

    sqlite3_vfs* const base = sqlite3_vfs_find(nullptr);
    gVfs = *base;
    gVfs.zName = "faulty";
    gVfs.pAppData = base;
    gVfs.szOsFile += static_cast<int>(sizeof(sqlite3_file));
    gVfs.xOpen = Open;
    gVfs.xDelete = OfVfs<&sqlite3_vfs::xDelete, kDelete, SQLITE_IOERR_DELETE>;
    gVfs.xAccess = OfVfs<&sqlite3_vfs::xAccess>;
    gVfs.xFullPathname = OfVfs<&sqlite3_vfs::xFullPathname>;
    sqlite3_vfs_register(&gVfs, 1);
}

void FaultyVfs::Arm(Call call, int position, bool lasting) {
    gFault = {call, position, lasting, 0, false};
}

int FaultyVfs::Disarm() {
    gFault.Kind = kCallCount;
    return gFault.Calls;
}

bool FaultyVfs::HasFailed() {
    return gFault.Failed;
}
