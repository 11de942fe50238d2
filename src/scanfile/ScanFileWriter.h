#pragma once

#include "scan/FileNode.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>

class QIODevice;

namespace tw::scanfile {

struct WriteOptions {
    QString progver;      // Tidewick's version, for the metadata
    qint64 timestamp = 0; // seconds since 1970 when the scan was made
    // Called every few thousand entries on the writing thread, with the
    // entries written and the tree's total.
    std::function<void(qint64 done, qint64 total)> progress;
    const std::atomic<bool>* cancel = nullptr;
};

enum class WriteOutcome { written, failed, cancelled };

// Writes `tree` in the saved-scan format (major 1, minor 2) to `out`, checking
// every write. Blocks for the whole tree: call it on a worker thread, with a
// tree nobody changes meanwhile. `error` gets the device's message on failure.
[[nodiscard]] WriteOutcome writeScan(const ScanTree& tree, QIODevice& out, const WriteOptions& options,
                                     QString* error = nullptr);

// Writes to the file at `path` through a temporary beside it, so that a
// failed or cancelled write leaves any earlier file whole; "-" is standard output.
[[nodiscard]] WriteOutcome writeScanFile(const ScanTree& tree, const QString& path, const WriteOptions& options,
                                         QString* error = nullptr);

// A name as a JSON string body: valid UTF-8 as it is, each byte that is not
// part of valid UTF-8 as the lone low surrogate \udcXX (XX the byte), which
// no valid UTF-8 text can produce, so the reader gets the same bytes back.
void appendJsonName(std::string& out, std::string_view name);

} // namespace tw::scanfile
