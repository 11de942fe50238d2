#pragma once

// The Linux answers behind VolumeFacts, split out so tests can give them a
// made-up /sys tree and mount table.

#include "scan/VolumeInfo.h"

#include <QByteArray>

#include <optional>
#include <string_view>

namespace tw::linuxvolume {

// From the block device MAJ:MIN under `sysRoot` (normally "/sys"): its
// queue/rotational, or the parent disk's when the device is a partition.
// unknown when nothing answers.
[[nodiscard]] VolumeInfo::Medium mediumFromSysfs(const QByteArray& sysRoot, unsigned major, unsigned minor);

// Whether a file-system type name from the mount table is a network one:
// NFS, SMB/CIFS, 9p, AFS, Ceph and the FUSE file systems that reach a server.
[[nodiscard]] bool isNetworkType(std::string_view typeName);

// The type of the mount holding `path` on device MAJ:MIN, from the text of a
// /proc/self/mountinfo; the longest mount point that holds the path wins.
[[nodiscard]] std::optional<QByteArray> mountType(const QByteArray& mountinfo, unsigned major, unsigned minor,
                                                  const QByteArray& path);

} // namespace tw::linuxvolume
