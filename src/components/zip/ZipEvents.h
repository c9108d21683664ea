#pragma once

#include <QString>

#include <functional>

namespace vmk::zip
{

// The events of the zip component. Every handler runs on the thread that called
// compress, extract or list, in the order the work happens; an unset handler is
// simply not called. Names are in the interface form, with "\".
struct ZipEvents {
    // A file is about to go in. storedName (in/out) starts as the name it would
    // get; setting exclude leaves the file out.
    std::function<void(QString& storedName, const QString& sourceName, qint64 size, bool& exclude)> preprocessingFile;
    // A file is left out, with a ZipSkipReason.
    std::function<void(const QString& name, int reason)> skippingFile;
    // Overall progress: files in the run, done, skipped, and the percentage of bytes.
    std::function<void(int total, int processed, int skipped, int percent)> globalStatus;
    // Percentage of the current file.
    std::function<void(const QString& name, int percent)> fileProgress;
    // The temporary archive on the host is being built (100: complete).
    std::function<void(int percent)> tempFileProgress;
    // The archive is being copied from the temporary file to its destination.
    std::function<void(int percent)> writeProgress;
    // The operation is over, whatever its result.
    std::function<void()> processCompleted;
    // One archive entry during listing, and the listing's progress.
    std::function<void(const QString& storedName, qint64 size)> listingFile;
    std::function<void(int percent)> listStatus;
    // A file is about to be unpacked; destination (in/out) is where it will land.
    std::function<void(const QString& storedName, QString& destination)> unzipPreprocessingFile;
};

} // namespace vmk::zip
