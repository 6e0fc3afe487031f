#pragma once

#include <cstdint>

/// What the sources of the XML parser share about its blocks.
namespace tavrin::xml {

inline constexpr int commentBlock = 0x20;
inline constexpr int sectionBlock = 0x40;
inline constexpr int tagBlock = 0x80;

/// What the line below an open tag must know of it (Parser::openBlockState): a double-quoted value is open.
inline constexpr std::uint8_t quoteOpen = 1;

} // namespace tavrin::xml
