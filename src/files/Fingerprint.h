#pragma once

#include <cstdint>
#include <string_view>

namespace tavrin {

/// Tells contents apart: their length and the FNV-1a hash (Fowler, Noll, Vo) of 64 bits.
struct Fingerprint {
    std::uint64_t size = 0;
    std::uint64_t hash = 0xcbf29ce484222325U;

    void add(std::string_view bytes) {
        size += bytes.size();
        for (const char byte : bytes)
            hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    friend bool operator==(const Fingerprint&, const Fingerprint&) = default;
};

} // namespace tavrin
