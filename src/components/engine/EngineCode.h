#pragma once

namespace vmk::engine
{

// Return codes of LoadEngine and of ScanFile. The user sees the number, so the
// values never change; libclamav's own errors are reported as ClamError + code.
enum EngineCode : int {
    Ok = 0,
    NotLoaded = 1, // ScanFile before a successful LoadEngine
    PathMissing = 2, // no such file (or a path through a file)
    PathIsFolder = 3,
    NotRegularFile = 4, // socket, FIFO, device: never opened for reading
    Unreadable = 5, // exists, but cannot be opened
    TempFolderUnusable = 6, // the host's temporary folder is missing or not writable
    SignaturesMissing = 7, // no sigs folder, or it holds no signature file
    SignaturesBroken = 8, // libclamav refused the signature files
    CompileFailed = 9,
    InitFailed = 10,
    BadPath = 11, // empty path, or one that does not map onto the host
    ClamError = 100, // 100 + cl_error_t of a failed scan
};

} // namespace vmk::engine
