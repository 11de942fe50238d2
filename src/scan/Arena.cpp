#include "scan/Arena.h"

#include <cstdint>

namespace tw {

namespace {
// Requests above this get an allocation of their own, so a chunk is never
// abandoned with a large unused tail: the waste per chunk stays near 3 %.
constexpr std::size_t kOwnAllocationAbove = 2048;

std::byte* alignUp(std::byte* at, std::size_t alignment)
{
    auto address = reinterpret_cast<std::uintptr_t>(at);
    address = (address + alignment - 1) & ~(std::uintptr_t(alignment) - 1);
    return reinterpret_cast<std::byte*>(address);
}
} // namespace

void* Arena::allocateInNewChunk(std::size_t bytes, std::size_t alignment)
{
    if (bytes > kOwnAllocationAbove) {
        const std::size_t size = bytes + alignment;
        m_chunks.emplace_back(new std::byte[size]);
        m_reserved += size;
        return alignUp(m_chunks.back().get(), alignment);
    }
    m_chunks.emplace_back(new std::byte[kChunkSize]);
    m_reserved += kChunkSize;
    std::byte* out = alignUp(m_chunks.back().get(), alignment);
    m_cursor = out + bytes;
    m_left = kChunkSize - std::size_t(m_cursor - m_chunks.back().get());
    return out;
}

} // namespace tw
