// The bulk listing call and nothing else: what the records mean is read in
// scan/BulkRecords.cpp, tested on every platform.

#include "platform/BulkLister.h"
#include "scan/BulkRecords.h"

#include <sys/attr.h>
#include <sys/stat.h>
#include <sys/vnode.h>
#include <unistd.h>

namespace tw {

// The shared reader's numbers are the system's.
static_assert(bulk::kCommonName == ATTR_CMN_NAME && bulk::kCommonDevice == ATTR_CMN_DEVID
              && bulk::kCommonObjectType == ATTR_CMN_OBJTYPE && bulk::kCommonFlags == ATTR_CMN_FLAGS
              && bulk::kCommonFileId == ATTR_CMN_FILEID && bulk::kCommonError == ATTR_CMN_ERROR
              && bulk::kCommonReturned == ATTR_CMN_RETURNED_ATTRS && bulk::kDirAllocatedSize == ATTR_DIR_ALLOCSIZE
              && bulk::kFileLinkCount == ATTR_FILE_LINKCOUNT && bulk::kFileAllocatedSize == ATTR_FILE_ALLOCSIZE
              && bulk::kDatalessFlag == SF_DATALESS);
static_assert(bulk::kRegular == VREG && bulk::kDirectory == VDIR && bulk::kLink == VLNK && bulk::kFifo == VFIFO);
static_assert(sizeof(attribute_set_t) == sizeof(bulk::AttributeSet) && sizeof(attrreference_t) == 8);

namespace {
class SystemBulkLister final : public BulkLister {
public:
    int fill(int fd, unsigned char* buffer, std::size_t size) const override
    {
        struct attrlist request {};
        request.bitmapcount = ATTR_BIT_MAP_COUNT;
        request.commonattr = bulk::kRequested.common;
        request.dirattr = bulk::kRequested.directory;
        request.fileattr = bulk::kRequested.file;
        return ::getattrlistbulk(fd, &request, buffer, size, 0);
    }
};
} // namespace

const BulkLister* systemBulkLister()
{
    static const SystemBulkLister lister;
    return &lister;
}

} // namespace tw
