#include "platform/core/MarkupBlocks.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)
#include <immintrin.h>
#endif

namespace tavrin::scan {

namespace {

enum class Kind : std::uint8_t { None, NamePart, Letter, Sign, Less, Greater, Quote, Apostrophe, Odd };

constexpr std::array<Kind, 0x80> asciiKinds = [] {
    std::array<Kind, 0x80> kinds{};
    const auto set = [&](std::string_view characters, Kind kind) {
        for (const char c : characters)
            kinds[static_cast<std::size_t>(c)] = kind;
    };
    set("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", Kind::Letter);
    set("0123456789:-_", Kind::NamePart);
    set("/=?", Kind::Sign);
    set("<", Kind::Less);
    set(">", Kind::Greater);
    set("\"", Kind::Quote);
    set("'", Kind::Apostrophe);
    set(".\x7F", Kind::Odd);
    return kinds;
}();

void addMark(MarkupBlock& block, std::uint64_t bit, Kind kind) {
    switch (kind) {
    case Kind::Less:
        block.less |= bit;
        block.signs |= bit;
        break;
    case Kind::Greater:
        block.greater |= bit;
        block.signs |= bit;
        break;
    case Kind::Sign:
        block.signs |= bit;
        break;
    case Kind::Quote:
        block.quotes |= bit;
        break;
    case Kind::Apostrophe:
        block.apostrophes |= bit;
        break;
    default:
        block.odd |= bit;
        break;
    }
}

} // namespace

void portable::markupBlocks(std::u16string_view text, MarkupBlock* blocks) {
    Kind last = Kind::None; // Letter also for other characters of a name
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), markupBlockSize))) {
        MarkupBlock block{};
        std::uint64_t bit = 1;
        for (const char16_t unit : text.substr(0, markupBlockSize)) {
            const Kind kind = unit < asciiKinds.size() ? asciiKinds[unit] : Kind::Odd;
            if (kind == Kind::Letter || (kind == Kind::NamePart && last == Kind::Letter)) {
                block.names |= bit;
                block.odd |= last == Kind::NamePart ? bit : 0;
                last = Kind::Letter;
            } else {
                if (kind > Kind::Letter)
                    addMark(block, bit, kind);
                if (last == Kind::NamePart && kind > Kind::Letter && kind <= Kind::Quote)
                    block.odd |= bit;
                last = kind;
            }
            bit <<= 1;
        }
        *blocks++ = block;
    }
}

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)

namespace {

/// A text block by block, the last one padded.
class TextBlocks {
  public:
    explicit TextBlocks(std::u16string_view text) : rest_(text) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    const char16_t* next() {
        if (rest_.size() < markupBlockSize) {
            rest_.copy(padded_.data(), rest_.size());
            rest_ = {};
            return padded_.data();
        }
        const char16_t* const block = rest_.data();
        rest_.remove_prefix(markupBlockSize);
        return block;
    }

  private:
    std::u16string_view rest_;
    std::array<char16_t, markupBlockSize> padded_{};
};

/// Tells names from what only looks like a part of one, block after block.
class NameStarts {
  public:
    /// `block` has all masks but names, and no more than single characters among the odd ones.
    void finish(MarkupBlock& block, std::uint64_t letters, std::uint64_t nameParts) {
        const std::uint64_t all = letters | nameParts;
        const std::uint64_t starts = nameParts & (~(all << 1 | lastOfAll_) | lastStray_);
        const std::uint64_t strays = nameParts & ~(nameParts + starts); // adding clears what follows a start
        block.names = all & ~strays;
        block.odd |= (strays << 1 | lastStray_) & (block.names | block.signs | block.quotes);
        lastOfAll_ = all >> lastBit;
        lastStray_ = strays >> lastBit;
    }

  private:
    static constexpr int lastBit = markupBlockSize - 1;

    // Each 0 or 1, of the last unit before:
    std::uint64_t lastOfAll_ = 0;
    std::uint64_t lastStray_ = 0;
};

// Units are narrowed to bytes with signed saturation: those from 0x7F on become 0x7F, which one more makes
// negative, or are negative. A byte lies in a range when its distance from the lower end is the lesser of
// that and the length.

constexpr char alphabet = 'z' - 'a';
constexpr char digitsAndColon = ':' - '0';
constexpr char caseBit = 0x20;
constexpr char signsBits = '?' - '<'; ///< what is equal to "?" with these bits set is one of < = > ?

std::uint64_t bitsOf(__m128i lane) {
    return static_cast<unsigned>(_mm_movemask_epi8(lane));
}

__m128i equal(__m128i bytes, char c) {
    return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c));
}

__m128i inRange(__m128i bytes, char first, char length) {
    const __m128i distance = _mm_sub_epi8(bytes, _mm_set1_epi8(first));
    return _mm_cmpeq_epi8(_mm_min_epu8(distance, _mm_set1_epi8(length)), distance);
}

__m128i letters(__m128i bytes) {
    return inRange(_mm_or_si128(bytes, _mm_set1_epi8(caseBit)), 'a', alphabet);
}

__m128i nameParts(__m128i bytes) {
    return _mm_or_si128(inRange(bytes, '0', digitsAndColon),
                        _mm_or_si128(equal(bytes, '-'), equal(bytes, '_')));
}

__m128i signs(__m128i bytes) {
    return _mm_or_si128(equal(bytes, '/'), equal(_mm_or_si128(bytes, _mm_set1_epi8(signsBits)), '?'));
}

__m128i odd(__m128i bytes) {
    return _mm_or_si128(equal(bytes, '.'), _mm_or_si128(bytes, _mm_add_epi8(bytes, _mm_set1_epi8(1))));
}

} // namespace

void fallback::markupBlocks(std::u16string_view text, MarkupBlock* blocks) {
    NameStarts names;
    for (TextBlocks rest(text); !rest.atEnd(); ++blocks) {
        const auto* units = reinterpret_cast<const __m128i*>(rest.next());
        MarkupBlock block{};
        std::uint64_t allLetters = 0;
        std::uint64_t allParts = 0;
        for (std::size_t i = 0; i < markupBlockSize; i += sizeof(__m128i), units += 2) {
            const __m128i bytes = _mm_packs_epi16(_mm_loadu_si128(units), _mm_loadu_si128(units + 1));
            allLetters |= bitsOf(letters(bytes)) << i;
            allParts |= bitsOf(nameParts(bytes)) << i;
            block.signs |= bitsOf(signs(bytes)) << i;
            block.less |= bitsOf(equal(bytes, '<')) << i;
            block.greater |= bitsOf(equal(bytes, '>')) << i;
            block.quotes |= bitsOf(equal(bytes, '"')) << i;
            block.apostrophes |= bitsOf(equal(bytes, '\'')) << i;
            block.odd |= bitsOf(odd(bytes)) << i;
        }
        names.finish(block, allLetters, allParts);
        *blocks = block;
    }
}

namespace {

[[gnu::target("avx2")]] inline __m256i narrowed(const char16_t* text) {
    constexpr int inOrder = 0b11'01'10'00; // packing goes by halves
    const auto* const units = reinterpret_cast<const __m256i*>(text);
    return _mm256_permute4x64_epi64(
        _mm256_packs_epi16(_mm256_loadu_si256(units), _mm256_loadu_si256(units + 1)), inOrder);
}

[[gnu::target("avx2")]] inline __m256i equal(__m256i bytes, char c) {
    return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(c));
}

[[gnu::target("avx2")]] inline __m256i inRange(__m256i bytes, char first, char length) {
    const __m256i distance = _mm256_sub_epi8(bytes, _mm256_set1_epi8(first));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(distance, _mm256_set1_epi8(length)), distance);
}

[[gnu::target("avx2")]] inline __m256i letters(__m256i bytes) {
    return inRange(_mm256_or_si256(bytes, _mm256_set1_epi8(caseBit)), 'a', alphabet);
}

[[gnu::target("avx2")]] inline __m256i nameParts(__m256i bytes) {
    return _mm256_or_si256(inRange(bytes, '0', digitsAndColon),
                           _mm256_or_si256(equal(bytes, '-'), equal(bytes, '_')));
}

[[gnu::target("avx2")]] inline __m256i signs(__m256i bytes) {
    return _mm256_or_si256(equal(bytes, '/'),
                           equal(_mm256_or_si256(bytes, _mm256_set1_epi8(signsBits)), '?'));
}

[[gnu::target("avx2")]] inline __m256i odd(__m256i bytes) {
    return _mm256_or_si256(equal(bytes, '.'),
                           _mm256_or_si256(bytes, _mm256_add_epi8(bytes, _mm256_set1_epi8(1))));
}

[[gnu::target("avx2")]] inline std::uint64_t join(__m256i low, __m256i high) {
    return static_cast<std::uint64_t>(static_cast<unsigned>(_mm256_movemask_epi8(high))) << 32 |
           static_cast<unsigned>(_mm256_movemask_epi8(low));
}

[[gnu::target("avx2")]] void avx2MarkupBlocks(std::u16string_view text, MarkupBlock* blocks) {
    NameStarts names;
    for (TextBlocks rest(text); !rest.atEnd(); ++blocks) {
        const char16_t* const units = rest.next();
        const __m256i low = narrowed(units);
        const __m256i high = narrowed(units + sizeof(__m256i));
        MarkupBlock block{};
        block.signs = join(signs(low), signs(high));
        block.less = join(equal(low, '<'), equal(high, '<'));
        block.greater = join(equal(low, '>'), equal(high, '>'));
        block.quotes = join(equal(low, '"'), equal(high, '"'));
        block.apostrophes = join(equal(low, '\''), equal(high, '\''));
        block.odd = join(odd(low), odd(high));
        names.finish(block, join(letters(low), letters(high)), join(nameParts(low), nameParts(high)));
        *blocks = block;
    }
}

} // namespace

void markupBlocks(std::u16string_view text, MarkupBlock* blocks) {
    static const auto best = __builtin_cpu_supports("avx2") ? avx2MarkupBlocks : fallback::markupBlocks;
    best(text, blocks);
}

#else

void fallback::markupBlocks(std::u16string_view text, MarkupBlock* blocks) {
    portable::markupBlocks(text, blocks);
}

void markupBlocks(std::u16string_view text, MarkupBlock* blocks) {
    portable::markupBlocks(text, blocks);
}

#endif

} // namespace tavrin::scan
