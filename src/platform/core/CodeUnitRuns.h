#pragma once

#include <cstddef>
#include <cstdint>

/// Conversion of runs of bytes that are code units of the same value, many at a time where the machine can.
///
/// The functions named Prefix stop at the first unit that is out of range and return how many they
/// converted; they may also write behind that, up to `size` units: the output has room for `size` in any
/// case.
namespace tavrin {

/// How many of the bytes are below 0x80, up to the first that is not.
std::size_t asciiPrefix(const std::uint8_t* in, std::size_t size);
/// Bytes below 0x80.
std::size_t widenAsciiPrefix(const std::uint8_t* in, std::size_t size, char16_t* out);
/// All bytes.
void widenLatin1(const std::uint8_t* in, std::size_t size, char16_t* out);
/// Code units below 0x80.
std::size_t narrowAsciiPrefix(const char16_t* in, std::size_t size, char* out);
/// Code units below 0x100.
std::size_t narrowLatin1Prefix(const char16_t* in, std::size_t size, char* out);

/// The same without instructions of one machine: what runs elsewhere, and what the others are tested against.
namespace portable {

std::size_t asciiPrefix(const std::uint8_t* in, std::size_t size);
std::size_t widenAsciiPrefix(const std::uint8_t* in, std::size_t size, char16_t* out);
void widenLatin1(const std::uint8_t* in, std::size_t size, char16_t* out);
std::size_t narrowAsciiPrefix(const char16_t* in, std::size_t size, char* out);
std::size_t narrowLatin1Prefix(const char16_t* in, std::size_t size, char* out);

} // namespace portable

} // namespace tavrin
