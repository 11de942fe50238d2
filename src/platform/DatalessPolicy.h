#pragma once

namespace tw {

// Stops the whole process from downloading files and folders that a file
// provider keeps in the cloud: reading them is refused instead (see
// scan/Dataless.h). Called before every walk, application sizing and
// related-file search; cheap to repeat. False when the system would not
// take the policy. Any thread. Nothing to do where no file provider can
// evict files (Linux).
bool keepDatalessFilesRemote();

} // namespace tw
