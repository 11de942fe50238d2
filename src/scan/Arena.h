#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tw {

// Bump allocator for one scan's nodes and names. Nothing is freed on its own:
// the whole arena goes when the tree that owns it goes. Not thread-safe; each
// walker thread fills its own arena and hands it to the tree at the end.
class Arena {
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    Arena(Arena&&) noexcept = default;
    Arena& operator=(Arena&&) noexcept = default;

    // Uninitialised storage of `bytes` with the given power-of-two alignment.
    // Inline for the common case, a fit in the current chunk: every name and
    // every folder's children come through here.
    [[nodiscard]] void* allocate(std::size_t bytes, std::size_t alignment)
    {
        const auto address = reinterpret_cast<std::uintptr_t>(m_cursor);
        const std::size_t padding = std::size_t(-address & (alignment - 1));
        if (m_cursor && padding + bytes <= m_left) {
            std::byte* out = m_cursor + padding;
            m_cursor = out + bytes;
            m_left -= padding + bytes;
            return out;
        }
        return allocateInNewChunk(bytes, alignment);
    }

    // Bytes taken from the system, for the benchmark's per-entry figure.
    [[nodiscard]] std::size_t reservedBytes() const { return m_reserved; }

private:
    void* allocateInNewChunk(std::size_t bytes, std::size_t alignment);

    static constexpr std::size_t kChunkSize = 64 * 1024;
    std::vector<std::unique_ptr<std::byte[]>> m_chunks;
    std::byte* m_cursor = nullptr;
    std::size_t m_left = 0;
    std::size_t m_reserved = 0;
};

} // namespace tw
