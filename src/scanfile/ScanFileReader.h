#pragma once

#include "scan/FileNode.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

namespace tw::scanfile {

// Why a saved scan could not be read. The file is outside data: every way it
// can be wrong ends here, never in a crash.
enum class ReadError {
    none,
    cannotOpen,     // the system refused to open or read it
    notScanFile,    // not JSON, or not the array a saved scan is
    version,        // a major version other than 1
    syntax,         // broken JSON
    wrongType,      // a field of the wrong kind
    truncated,      // ends before the tree does
    tooDeep,        // folders nested deeper than any disk allows
    badNumber,      // a size that is negative, fractional or overflows
    beyondDisk,     // sizes that add up beyond any disk
    badName,        // an empty name, one with "/", ".", "..", or too long
    duplicateName,  // two entries of one name in one folder
    tooMany,        // more entries, or children of one folder, than a tree holds
    compressed,     // zstd data this build cannot or did not decode
    cancelled,
};

struct ReadResult {
    std::shared_ptr<ScanTree> tree; // null unless error is none
    ReadError error = ReadError::none;
    qint64 offset = 0;  // where in the (decompressed) text the fault lies
    QString detail;     // English, for the command line and logs
    QString progname;   // the program that wrote it, as it says
    QString progver;
    QDateTime madeAt;   // invalid when the file does not say
    // Bytes the folders themselves take (dsize of each folder), which a tree
    // does not count: the writer's totals are the tree's plus these.
    qint64 folderBytes = 0;
    bool compressed = false;
};

struct ReadOptions {
    // Called every few thousand entries on the reading thread, with the file
    // bytes read so far and the file's size (0 when unknown).
    std::function<void(qint64 done, qint64 total)> progress;
    // Checked as often; when set, reading stops with `cancelled`.
    const std::atomic<bool>* cancel = nullptr;
};

// Reads the file at `path` (raw bytes), plain or zstd-compressed. Blocks for
// the whole read: call it on a worker thread.
[[nodiscard]] ReadResult readScanFile(const QByteArray& path, const ReadOptions& options = {});
// The same from bytes in memory (the fuzzer, the tests).
[[nodiscard]] ReadResult readScanBytes(const QByteArray& bytes, const ReadOptions& options = {});

// English words for a fault, with its place: "line 3: …" for the CLI.
[[nodiscard]] QString describe(const ReadResult& result);

} // namespace tw::scanfile
