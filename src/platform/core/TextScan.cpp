#include "platform/core/TextScan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <numeric>

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)
#include <immintrin.h>
#endif

namespace tavrin::scan {

constexpr std::size_t npos = std::u16string_view::npos;

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

bool equalsFolded(std::string_view text, std::string_view folded) {
    return std::ranges::equal(text, folded, {}, lower);
}

} // namespace

bool isPrintableAscii(std::u16string_view text) {
    using Word = std::uint64_t;
    constexpr std::size_t units = sizeof(Word) / sizeof(char16_t);
    constexpr Word each = 0x0001'0001'0001'0001;
    constexpr Word top = each * 0x80;
    Word others = 0; // below 0x80 no sum reaches the next unit
    const auto look = [&](Word word) {
        others |= (word & each * 0xFF80) | (~(word + each * 0x60) & top) | ((word + each) & top);
    };
    for (; text.size() >= units; text.remove_prefix(units)) {
        Word word = 0;
        std::memcpy(&word, text.data(), sizeof word);
        look(word);
    }
    if (!text.empty()) {
        Word last = each * u' ';
        std::memcpy(&last, text.data(), text.size() * sizeof(char16_t));
        look(last);
    }
    return others == 0;
}

namespace portable {

std::size_t findAsciiFolded(std::string_view text, std::string_view what, std::size_t start) {
    for (std::size_t at = start; at + what.size() <= text.size(); ++at)
        if (equalsFolded(text.substr(at, what.size()), what))
            return at;
    return npos;
}

std::size_t findUnit(std::u16string_view text, char16_t unit, std::size_t start) {
    return text.find(unit, start);
}

std::size_t findText(std::u16string_view text, std::u16string_view what, std::size_t start) {
    return text.find(what, start);
}

std::size_t countUnit(std::u16string_view text, char16_t unit) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), unit));
}

std::size_t countUnit(std::string_view text, char unit) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), unit));
}

LineScan scanLine(std::u16string_view text) {
    LineScan result{0, 0};
    for (; result.length < text.size(); ++result.length) {
        const char16_t c = text[result.length];
        if (c == u'\n' || c == u'\r' || c == u'\uFEFF')
            break;
        result.tabs += c == u'\t';
    }
    return result;
}

ByteLineScan scanByteLine(std::string_view bytes) {
    ByteLineScan result{0, 0, true};
    for (; result.length < bytes.size(); ++result.length) {
        const char c = bytes[result.length];
        if (c == '\n' || c == '\r')
            break;
        result.tabs += c == '\t';
        result.ascii &= static_cast<unsigned char>(c) < 0x80;
    }
    return result;
}

LineMasks lineMasks(const char* bytes) {
    LineMasks masks;
    for (std::size_t i = 0; i < maskStep; ++i) {
        const std::uint64_t bit = std::uint64_t{1} << i;
        masks.breaks |= bytes[i] == '\n' || bytes[i] == '\r' ? bit : 0;
        masks.tabs |= bytes[i] == '\t' ? bit : 0;
        masks.high |= static_cast<unsigned char>(bytes[i]) >= 0x80 ? bit : 0;
    }
    return masks;
}

namespace {

/// Fills in what follows from where the bytes stand.
void addUp(MarkupMasks& masks) {
    masks.feedCount = static_cast<std::uint64_t>(std::popcount(masks.feeds));
    masks.edgesPassed = parityUpTo(masks.less | masks.greater);
    masks.quotesPassed = parityUpTo(masks.quotes);
    masks.apostrophesPassed = parityUpTo(masks.apostrophes);
}

} // namespace

void markupMasks(const char* bytes, std::span<MarkupMasks> all) {
    for (MarkupMasks& masks : all) {
        masks = {};
        for (std::size_t i = 0; i < maskStep; ++i) {
            const char byte = *bytes++;
            const std::uint64_t bit = std::uint64_t{1} << i;
            masks.less |= byte == '<' ? bit : 0;
            masks.greater |= byte == '>' ? bit : 0;
            masks.quotes |= byte == '"' ? bit : 0;
            masks.apostrophes |= byte == '\'' ? bit : 0;
            masks.marks |= byte == '!' ? bit : 0;
            masks.feeds |= byte == '\n' ? bit : 0;
            masks.returns |= byte == '\r' ? bit : 0;
        }
        addUp(masks);
    }
}

namespace {

template <class Unit>
std::size_t edgesOf(std::basic_string_view<Unit> text, std::uint32_t first, std::uint32_t* places) {
    std::size_t count = 0;
    for (const Unit unit : text) {
        if (unit == '<' || unit == '>')
            places[count++] = first;
        ++first;
    }
    return count;
}

} // namespace

std::size_t findEdges(std::string_view text, std::uint32_t first, std::uint32_t* places) {
    return edgesOf(text, first, places);
}

std::size_t findEdges(std::u16string_view text, std::uint32_t first, std::uint32_t* places) {
    return edgesOf(text, first, places);
}

std::size_t findBytes(std::string_view text, std::string_view what, std::size_t start) {
    return text.find(what, start);
}

} // namespace portable

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)

namespace {

constexpr std::size_t lane = 8;       // code units in a vector
constexpr std::size_t byteLanes = 16; // bytes

__m128i load(const char16_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

__m128i broadcast(char16_t unit) {
    return _mm_set1_epi16(static_cast<short>(unit));
}

/// Two bits for every unit of the vector that compared equal.
unsigned mask(__m128i equal) {
    return static_cast<unsigned>(_mm_movemask_epi8(equal));
}

std::uint64_t bitsOf(__m128i equal) {
    return mask(equal);
}

std::size_t firstUnit(unsigned bits) {
    return static_cast<std::size_t>(std::countr_zero(bits)) / 2;
}

} // namespace

std::size_t findUnit(std::u16string_view text, char16_t unit, std::size_t start) {
    const __m128i wanted = broadcast(unit);
    std::size_t at = start;
    for (; at + lane <= text.size(); at += lane)
        if (const unsigned bits = mask(_mm_cmpeq_epi16(load(text.data() + at), wanted)))
            return at + firstUnit(bits);
    for (; at < text.size(); ++at)
        if (text[at] == unit)
            return at;
    return npos;
}

// Positions are filtered by the first and the last unit at once; few are left for the full comparison.
std::size_t findText(std::u16string_view text, std::u16string_view what, std::size_t start) {
    if (what.size() == 1)
        return findUnit(text, what.front(), start);
    if (what.size() > text.size() || start > text.size() - what.size())
        return npos;
    const __m128i first = broadcast(what.front());
    const __m128i last = broadcast(what.back());
    const std::size_t reach = what.size() - 1;
    std::size_t at = start;
    for (; at + reach + lane <= text.size(); at += lane) {
        const __m128i hits = _mm_and_si128(_mm_cmpeq_epi16(load(text.data() + at), first),
                                           _mm_cmpeq_epi16(load(text.data() + at + reach), last));
        for (unsigned bits = mask(hits); bits; bits &= bits - 1, bits &= bits - 1) {
            const std::size_t candidate = at + firstUnit(bits);
            if (text.compare(candidate, what.size(), what) == 0)
                return candidate;
        }
    }
    return portable::findText(text, what, at);
}

std::size_t countUnit(std::u16string_view text, char16_t unit) {
    constexpr std::size_t mostVectors = 0x7FFF; // what a lane can count
    const __m128i wanted = broadcast(unit);
    std::size_t count = 0;
    std::size_t at = 0;
    while (at + lane <= text.size()) {
        const std::size_t end = at + lane * std::min(mostVectors, (text.size() - at) / lane);
        __m128i counts = _mm_setzero_si128();
        for (; at < end; at += lane)
            counts = _mm_sub_epi16(counts, _mm_cmpeq_epi16(load(text.data() + at), wanted));
        std::array<std::uint32_t, 4> sums;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sums.data()), _mm_madd_epi16(counts, _mm_set1_epi16(1)));
        count += std::accumulate(sums.begin(), sums.end(), std::size_t{0});
    }
    return count + portable::countUnit(text.substr(at), unit);
}

std::size_t countUnit(std::string_view text, char unit) {
    constexpr std::size_t mostVectors = 0xFF; // what a lane can count
    const __m128i wanted = _mm_set1_epi8(unit);
    std::size_t count = 0;
    std::size_t at = 0;
    while (at + byteLanes <= text.size()) {
        const std::size_t end = at + byteLanes * std::min(mostVectors, (text.size() - at) / byteLanes);
        __m128i counts = _mm_setzero_si128();
        for (; at < end; at += byteLanes) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
            counts = _mm_sub_epi8(counts, _mm_cmpeq_epi8(bytes, wanted));
        }
        std::array<std::uint64_t, 2> sums;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(sums.data()), _mm_sad_epu8(counts, _mm_setzero_si128()));
        count += sums[0] + sums[1];
    }
    return count + portable::countUnit(text.substr(at), unit);
}

LineScan scanLine(std::u16string_view text) {
    const __m128i lineFeed = broadcast(u'\n');
    const __m128i carriageReturn = broadcast(u'\r');
    const __m128i mark = broadcast(u'\uFEFF');
    const __m128i tab = broadcast(u'\t');
    LineScan result{0, 0};
    for (; result.length + lane <= text.size(); result.length += lane) {
        const __m128i units = load(text.data() + result.length);
        const unsigned tabs = mask(_mm_cmpeq_epi16(units, tab));
        const unsigned stops = mask(_mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi16(units, lineFeed), _mm_cmpeq_epi16(units, carriageReturn)),
            _mm_cmpeq_epi16(units, mark)));
        if (stops) {
            const unsigned before = (stops & (0U - stops)) - 1;
            result.tabs += static_cast<std::size_t>(std::popcount(tabs & before)) / 2;
            result.length += firstUnit(stops);
            return result;
        }
        result.tabs += static_cast<std::size_t>(std::popcount(tabs)) / 2;
    }
    const LineScan rest = portable::scanLine(text.substr(result.length));
    return {result.length + rest.length, result.tabs + rest.tabs};
}

LineMasks lineMasks(const char* from) {
    const __m128i lineFeed = _mm_set1_epi8('\n');
    const __m128i carriageReturn = _mm_set1_epi8('\r');
    const __m128i tab = _mm_set1_epi8('\t');
    constexpr std::size_t lanes = maskStep / byteLanes;
    __m128i bytes[lanes];
    __m128i anyTab = _mm_setzero_si128();
    __m128i anyHigh = anyTab;
    LineMasks masks;
    for (std::size_t i = 0; i < lanes; ++i) {
        bytes[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i * byteLanes));
        masks.breaks |=
            bitsOf(_mm_or_si128(_mm_cmpeq_epi8(bytes[i], lineFeed), _mm_cmpeq_epi8(bytes[i], carriageReturn)))
            << (i * byteLanes);
        anyTab = _mm_or_si128(anyTab, _mm_cmpeq_epi8(bytes[i], tab));
        anyHigh = _mm_or_si128(anyHigh, bytes[i]);
    }
    if (bitsOf(anyTab)) // few texts have any of these
        for (std::size_t i = 0; i < lanes; ++i)
            masks.tabs |= bitsOf(_mm_cmpeq_epi8(bytes[i], tab)) << (i * byteLanes);
    if (bitsOf(anyHigh))
        for (std::size_t i = 0; i < lanes; ++i)
            masks.high |= bitsOf(bytes[i]) << (i * byteLanes);
    return masks;
}

namespace {

void sse2MarkupMasks(const char* bytes, std::span<MarkupMasks> all) {
    const auto from = [&](std::size_t i) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i * byteLanes));
    };
    for (MarkupMasks& masks : all) {
        const __m128i lanes[]{from(0), from(1), from(2), from(3)};
        const auto where = [&](char c) {
            const __m128i wanted = _mm_set1_epi8(c);
            const auto bits = [&](int i) { return bitsOf(_mm_cmpeq_epi8(lanes[i], wanted)) << (i * 16); };
            return bits(0) | bits(1) | bits(2) | bits(3);
        };
        masks = {where('<'), where('>'), where('"'), where('\''), where('!'), where('\n'), where('\r')};
        portable::addUp(masks);
        bytes += maskStep;
    }
}

[[gnu::target("avx2")]] inline std::uint64_t where(__m256i low, __m256i high, char c) {
    const __m256i wanted = _mm256_set1_epi8(c);
    const auto lowBits = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, wanted)));
    const auto highBits = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, wanted)));
    return std::uint64_t{highBits} << 32 | lowBits;
}

/// A product without carries by ones alone adds up, without carries too, what lies below each bit.
[[gnu::target("avx2,pclmul")]] inline std::uint64_t fastParityUpTo(std::uint64_t bits) {
    const __m128i ones = _mm_set1_epi8(static_cast<char>(0xFF));
    const __m128i product = _mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<long long>(bits)), ones, 0);
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(product));
}

[[gnu::target("avx2,popcnt,pclmul")]] void avx2MarkupMasks(const char* bytes, std::span<MarkupMasks> all) {
    for (MarkupMasks& masks : all) {
        const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
        const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes) + 1);
        const std::uint64_t less = where(low, high, '<');
        const std::uint64_t greater = where(low, high, '>');
        const std::uint64_t quotes = where(low, high, '"');
        const std::uint64_t apostrophes = where(low, high, '\'');
        const std::uint64_t feeds = where(low, high, '\n');
        masks = {.less = less,
                 .greater = greater,
                 .quotes = quotes,
                 .apostrophes = apostrophes,
                 .marks = where(low, high, '!'),
                 .feeds = feeds,
                 .returns = where(low, high, '\r'),
                 .feedCount = static_cast<std::uint64_t>(__builtin_popcountll(feeds)),
                 .edgesPassed = fastParityUpTo(less | greater),
                 .quotesPassed = fastParityUpTo(quotes),
                 .apostrophesPassed = fastParityUpTo(apostrophes)};
        bytes += maskStep;
    }
}

} // namespace

void markupMasks(const char* bytes, std::span<MarkupMasks> masks) {
    static const auto best =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt") && __builtin_cpu_supports("pclmul")
            ? avx2MarkupMasks
            : sse2MarkupMasks;
    best(bytes, masks);
}

namespace {

/// `edges(from)`: where they stand among maskStep units.
template <class View, class Edges>
std::size_t findEdgesByMasks(View text, std::uint32_t first, std::uint32_t* places, Edges edges) {
    std::size_t at = 0;
    std::size_t count = 0;
    for (; at + maskStep <= text.size(); at += maskStep)
        for (std::uint64_t bits = edges(text.data() + at); bits; bits &= bits - 1)
            places[count++] =
                first + static_cast<std::uint32_t>(at) + static_cast<std::uint32_t>(std::countr_zero(bits));
    return count +
           portable::findEdges(text.substr(at), first + static_cast<std::uint32_t>(at), places + count);
}

std::size_t sse2FindEdges(std::string_view text, std::uint32_t first, std::uint32_t* places) {
    return findEdgesByMasks(text, first, places, [](const char* from) {
        const __m128i differing = _mm_set1_epi8('<' ^ '>');
        const __m128i greater = _mm_set1_epi8('>');
        std::uint64_t bits = 0;
        for (std::size_t i = 0; i < maskStep; i += byteLanes) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
            bits |= bitsOf(_mm_cmpeq_epi8(_mm_or_si128(bytes, differing), greater)) << i;
        }
        return bits;
    });
}

/// Writes the first few whether there are so many or not: nobody can predict how many there are.
[[gnu::target("avx2,bmi,popcnt")]] std::size_t avx2FindEdges(std::string_view text, std::uint32_t first,
                                                             std::uint32_t* places) {
    static_assert(('<' | ('<' ^ '>')) == '>');
    constexpr int atOnce = 6; // mostly enough
    const __m256i differing = _mm256_set1_epi8('<' ^ '>');
    std::uint32_t* to = places;
    std::size_t at = 0;
    for (; at + maskStep <= text.size(); at += maskStep) {
        const auto* const from = reinterpret_cast<const __m256i*>(text.data() + at);
        const __m256i low = _mm256_or_si256(_mm256_loadu_si256(from), differing);
        const __m256i high = _mm256_or_si256(_mm256_loadu_si256(from + 1), differing);
        std::uint64_t bits = where(low, high, '>');
        const int count = __builtin_popcountll(bits);
        const std::uint32_t here = first + static_cast<std::uint32_t>(at);
        for (int i = 0; i < atOnce; ++i, bits &= bits - 1)
            to[i] = here + static_cast<std::uint32_t>(std::countr_zero(bits));
        for (int i = atOnce; i < count; ++i, bits &= bits - 1)
            to[i] = here + static_cast<std::uint32_t>(std::countr_zero(bits));
        to += count;
    }
    const auto count = static_cast<std::size_t>(to - places);
    return count + portable::findEdges(text.substr(at), first + static_cast<std::uint32_t>(at), to);
}

} // namespace

std::size_t findEdges(std::string_view text, std::uint32_t first, std::uint32_t* places) {
    static const auto best =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("popcnt")
            ? avx2FindEdges
            : sse2FindEdges;
    return best(text, first, places);
}

std::size_t findEdges(std::u16string_view text, std::uint32_t first, std::uint32_t* places) {
    return findEdgesByMasks(text, first, places, [](const char16_t* from) {
        const __m128i differing = broadcast(u'<' ^ u'>');
        const __m128i greater = broadcast(u'>');
        const auto areEdges = [&](const char16_t* units) {
            return _mm_cmpeq_epi16(_mm_or_si128(load(units), differing), greater);
        };
        std::uint64_t bits = 0;
        for (std::size_t i = 0; i < maskStep; i += 2 * lane)
            bits |= bitsOf(_mm_packs_epi16(areEdges(from + i), areEdges(from + i + lane))) << i;
        return bits;
    });
}

namespace {

/// As findText. `foldBits(c)`: bits that are set in a byte before it is compared with c; `matches(candidate)`
/// compares the whole.
template <class FoldBits, class Matches>
std::size_t findFiltered(std::string_view text, std::string_view what, std::size_t& at, FoldBits foldBits,
                         Matches matches) {
    const auto filter = [&](char c) {
        return [bits = _mm_set1_epi8(foldBits(c)), wanted = _mm_set1_epi8(c)](const char* from) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
            return _mm_cmpeq_epi8(_mm_or_si128(bytes, bits), wanted);
        };
    };
    const auto first = filter(what.front());
    const auto last = filter(what.back());
    const std::size_t reach = what.size() - 1;
    for (; at + reach + byteLanes <= text.size(); at += byteLanes) {
        const char* const from = text.data() + at;
        const __m128i hits = _mm_and_si128(first(from), last(from + reach));
        for (auto bits = static_cast<unsigned>(_mm_movemask_epi8(hits)); bits; bits &= bits - 1) {
            const std::size_t candidate = at + static_cast<std::size_t>(std::countr_zero(bits));
            if (matches(text.substr(candidate, what.size())))
                return candidate;
        }
    }
    return npos;
}

} // namespace

std::size_t findBytes(std::string_view text, std::string_view what, std::size_t start) {
    const std::size_t found = findFiltered(
        text, what, start, [](char) { return '\0'; }, [&](std::string_view there) { return there == what; });
    return found != npos ? found : portable::findBytes(text, what, start);
}

namespace {

char foldBitOf(char c) {
    return c >= 'a' && c <= 'z' ? '\x20' : '\0';
}

std::size_t sse2FindAsciiFolded(std::string_view text, std::string_view what, std::size_t start) {
    const std::size_t found = findFiltered(text, what, start, foldBitOf,
                                           [&](std::string_view there) { return equalsFolded(there, what); });
    return found != npos ? found : portable::findAsciiFolded(text, what, start);
}

[[gnu::target("avx2")]] inline __m256i whereFolded(const char* from, __m256i foldBit, __m256i wanted) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    return _mm256_cmpeq_epi8(_mm256_or_si256(bytes, foldBit), wanted);
}

[[gnu::target("avx2")]] std::size_t avx2FindAsciiFolded(std::string_view text, std::string_view what,
                                                        std::size_t start) {
    const __m256i first = _mm256_set1_epi8(what.front());
    const __m256i last = _mm256_set1_epi8(what.back());
    const __m256i foldFirst = _mm256_set1_epi8(foldBitOf(what.front()));
    const __m256i foldLast = _mm256_set1_epi8(foldBitOf(what.back()));
    const std::size_t reach = what.size() - 1;
    std::size_t at = start;
    for (; at + reach + sizeof(__m256i) <= text.size(); at += sizeof(__m256i)) {
        const char* const from = text.data() + at;
        const __m256i hits =
            _mm256_and_si256(whereFolded(from, foldFirst, first), whereFolded(from + reach, foldLast, last));
        for (auto bits = static_cast<unsigned>(_mm256_movemask_epi8(hits)); bits; bits &= bits - 1) {
            const std::size_t candidate = at + static_cast<std::size_t>(std::countr_zero(bits));
            if (equalsFolded(text.substr(candidate, what.size()), what))
                return candidate;
        }
    }
    return sse2FindAsciiFolded(text, what, at);
}

} // namespace

std::size_t findAsciiFolded(std::string_view text, std::string_view what, std::size_t start) {
    static const auto best = __builtin_cpu_supports("avx2") ? avx2FindAsciiFolded : sse2FindAsciiFolded;
    return best(text, what, start);
}

ByteLineScan scanByteLine(std::string_view bytes) {
    ByteLineScan result{0, 0, true};
    for (; result.length + maskStep <= bytes.size(); result.length += maskStep) {
        const LineMasks masks = lineMasks(bytes.data() + result.length);
        if (masks.breaks) {
            const std::uint64_t before = (masks.breaks & (0 - masks.breaks)) - 1;
            if (masks.tabs) // few lines have any, and counting bits is slow on the oldest machines
                result.tabs += static_cast<std::size_t>(std::popcount(masks.tabs & before));
            result.ascii = result.ascii && !(masks.high & before);
            result.length += static_cast<std::size_t>(std::countr_zero(masks.breaks));
            return result;
        }
        if (masks.tabs)
            result.tabs += static_cast<std::size_t>(std::popcount(masks.tabs));
        result.ascii = result.ascii && !masks.high;
    }
    const ByteLineScan rest = portable::scanByteLine(bytes.substr(result.length));
    return {result.length + rest.length, result.tabs + rest.tabs, result.ascii && rest.ascii};
}

#else

std::size_t findUnit(std::u16string_view text, char16_t unit, std::size_t start) {
    return portable::findUnit(text, unit, start);
}
std::size_t findText(std::u16string_view text, std::u16string_view what, std::size_t start) {
    return portable::findText(text, what, start);
}
std::size_t countUnit(std::u16string_view text, char16_t unit) {
    return portable::countUnit(text, unit);
}
std::size_t countUnit(std::string_view bytes, char unit) {
    return portable::countUnit(bytes, unit);
}
LineScan scanLine(std::u16string_view text) {
    return portable::scanLine(text);
}
ByteLineScan scanByteLine(std::string_view bytes) {
    return portable::scanByteLine(bytes);
}
LineMasks lineMasks(const char* bytes) {
    return portable::lineMasks(bytes);
}
void markupMasks(const char* bytes, std::span<MarkupMasks> masks) {
    portable::markupMasks(bytes, masks);
}
std::size_t findBytes(std::string_view text, std::string_view what, std::size_t start) {
    return portable::findBytes(text, what, start);
}
std::size_t findAsciiFolded(std::string_view text, std::string_view what, std::size_t start) {
    return portable::findAsciiFolded(text, what, start);
}
std::size_t findEdges(std::string_view text, std::uint32_t first, std::uint32_t* places) {
    return portable::findEdges(text, first, places);
}
std::size_t findEdges(std::u16string_view text, std::uint32_t first, std::uint32_t* places) {
    return portable::findEdges(text, first, places);
}

#endif

} // namespace tavrin::scan
