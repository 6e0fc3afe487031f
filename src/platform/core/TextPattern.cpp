#include "platform/core/TextPattern.h"

#include "platform/core/CharacterClass.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <map>
#include <vector>

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)
#include <emmintrin.h>
#endif

namespace tavrin {

namespace {

constexpr std::size_t npos = std::u16string_view::npos;

/// How often a code unit is met in XML and program text, roughly, in thousandths.
int commonness(char16_t unit) {
    constexpr std::u16string_view often = u" etaoinsrl\"<>=/dcmup";
    if (const std::size_t rank = often.find(unit); rank != npos)
        return rank == 0 ? 150 : 70 - 2 * static_cast<int>(rank);
    if (unit >= u'a' && unit <= u'z')
        return 12;
    if (unit >= u'0' && unit <= u'9')
        return 15;
    return unit < 0x80 ? 5 : 3;
}

/// The units that fold to each unit other than the unit itself.
const std::map<char16_t, std::vector<char16_t>>& foldedFrom() {
    static const auto table = [] {
        std::map<char16_t, std::vector<char16_t>> made;
        const auto& fold = caseFoldTable();
        for (std::size_t unit = 0; unit < fold.size(); ++unit)
            if (fold[unit] != unit)
                made[fold[unit]].push_back(static_cast<char16_t>(unit));
        return made;
    }();
    return table;
}

} // namespace

TextPattern::TextPattern(std::u16string_view what, bool matchCase) : what_(what) {
    if (!matchCase) {
        fold_ = &caseFoldTable();
        std::ranges::transform(what_, what_.begin(), foldCase);
    }
    chooseProbes();
}

TextPattern::Probe TextPattern::probeAt(std::size_t offset) const {
    const char16_t unit = what_[offset];
    Probe probe{offset, 1, {}};
    probe.units.fill(unit);
    if (!fold_)
        return probe;
    if (const auto others = foldedFrom().find(unit); others != foldedFrom().end())
        for (const char16_t other : others->second) {
            if (probe.variants < mostVariants)
                probe.units[static_cast<std::size_t>(probe.variants)] = other;
            ++probe.variants;
        }
    return probe;
}

/// The two rarest units, counted with all their variants. Of a very long text only the beginning is
/// considered.
void TextPattern::chooseProbes() {
    constexpr std::size_t considered = 64;
    struct Candidate {
        Probe probe;
        int cost;
    };
    std::vector<Candidate> candidates;
    for (std::size_t offset = 0; offset < std::min(what_.size(), considered); ++offset) {
        const Probe probe = probeAt(offset);
        int cost = probe.variants > mostVariants ? 10'000 : 10 * (probe.variants - 1);
        for (const char16_t unit : probe.units)
            cost += commonness(unit);
        candidates.push_back({probe, cost});
    }
    // A unit that the text holds twice filters nothing more.
    std::ranges::stable_sort(candidates, {}, &Candidate::cost);
    probes_.fill(candidates.front().probe);
    const auto second = std::ranges::find_if(
        candidates, [&](const Candidate& c) { return c.probe.units[0] != probes_[0].units[0]; });
    if (second != candidates.end())
        probes_[1] = second->probe;
    else if (candidates.size() > 1)
        probes_[1] = candidates.back().probe;
}

bool TextPattern::matchesAt(std::u16string_view text, std::size_t at) const {
    const std::u16string_view there = text.substr(at, what_.size());
    if (!fold_)
        return there == what_;
    for (std::size_t i = 0; i < what_.size(); ++i)
        if ((*fold_)[there[i]] != what_[i])
            return false;
    return true;
}

std::size_t TextPattern::firstPortable(std::u16string_view text, std::size_t start) const {
    for (std::size_t at = start; at + what_.size() <= text.size(); ++at)
        if (matchesAt(text, at))
            return at;
    return npos;
}

std::size_t TextPattern::lastPortable(std::u16string_view text, std::size_t start) const {
    if (what_.size() > text.size())
        return npos;
    for (std::size_t at = std::min(start, text.size() - what_.size()) + 1; at-- > 0;)
        if (matchesAt(text, at))
            return at;
    return npos;
}

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)

namespace {

constexpr std::size_t lane = 8; // code units in a vector
constexpr std::size_t atOnce = 4;
constexpr unsigned allBits = 0xFFFF; // two for every unit of a vector

unsigned maskOf(__m128i equal) {
    return static_cast<unsigned>(_mm_movemask_epi8(equal));
}

} // namespace

/// Compares eight places at once. REQUIRES: 8 places from `at` on, all of which leave room for the pattern.
template <int variants>
struct TextPattern::Filter {
    explicit Filter(const std::array<Probe, 2>& probes)
        : firstOffset(probes[0].offset), secondOffset(probes[1].offset) {
        for (std::size_t i = 0; i < variants; ++i) {
            first[i] = _mm_set1_epi16(static_cast<short>(probes[0].units[i]));
            second[i] = _mm_set1_epi16(static_cast<short>(probes[1].units[i]));
        }
    }
    static __m128i equal(const char16_t* at, const __m128i* units) {
        const __m128i there = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        __m128i any = _mm_cmpeq_epi16(there, units[0]);
        for (std::size_t i = 1; i < variants; ++i)
            any = _mm_or_si128(any, _mm_cmpeq_epi16(there, units[i]));
        return any;
    }
    [[nodiscard]] __m128i hits(const char16_t* at) const {
        return _mm_and_si128(equal(at + firstOffset, first), equal(at + secondOffset, second));
    }

    std::size_t firstOffset;
    std::size_t secondOffset;
    __m128i first[variants];
    __m128i second[variants];
};

template <int variants>
std::size_t TextPattern::firstFiltered(std::u16string_view text, std::size_t start) const {
    const std::size_t places = text.size() - what_.size() + 1;
    const Filter<variants> filter(probes_);
    const auto check = [&](std::size_t at, unsigned bits) {
        for (; bits; bits &= bits - 1, bits &= bits - 1) {
            const std::size_t candidate = at + static_cast<std::size_t>(std::countr_zero(bits)) / 2;
            if (matchesAt(text, candidate))
                return candidate;
        }
        return npos;
    };
    std::size_t at = start;
    for (; at + atOnce * lane <= places; at += atOnce * lane) {
        __m128i hits[atOnce];
        for (std::size_t i = 0; i < atOnce; ++i)
            hits[i] = filter.hits(text.data() + at + i * lane);
        if (maskOf(_mm_or_si128(_mm_or_si128(hits[0], hits[1]), _mm_or_si128(hits[2], hits[3]))) == 0)
            continue;
        for (std::size_t i = 0; i < atOnce; ++i)
            if (const std::size_t found = check(at + i * lane, maskOf(hits[i])); found != npos)
                return found;
    }
    for (; at + lane <= places; at += lane)
        if (const std::size_t found = check(at, maskOf(filter.hits(text.data() + at))); found != npos)
            return found;
    if (at < places) { // the last vector once more, without what was looked at
        const std::size_t again = places - lane;
        return check(again, maskOf(filter.hits(text.data() + again)) & (allBits << (2 * (at - again))));
    }
    return npos;
}

template <int variants>
std::size_t TextPattern::lastFiltered(std::u16string_view text, std::size_t start) const {
    const Filter<variants> filter(probes_);
    const auto check = [&](std::size_t at, unsigned bits) {
        while (bits) {
            const std::size_t unit = static_cast<std::size_t>(std::bit_width(bits) - 1) / 2;
            if (matchesAt(text, at + unit))
                return at + unit;
            bits &= (1U << (2 * unit)) - 1;
        }
        return npos;
    };
    std::size_t end = start + 1; // places [0, end) are left
    for (; end >= lane; end -= lane)
        if (const std::size_t found = check(end - lane, maskOf(filter.hits(text.data() + end - lane)));
            found != npos)
            return found;
    return check(0, maskOf(filter.hits(text.data())) & ((1U << (2 * end)) - 1));
}

std::size_t TextPattern::first(std::u16string_view text, std::size_t start) const {
    const int variants = std::max(probes_[0].variants, probes_[1].variants);
    if (what_.size() > text.size() || start > text.size() - what_.size())
        return npos;
    if (text.size() - what_.size() + 1 - start < lane || variants > mostVariants)
        return firstPortable(text, start);
    return variants == 1   ? firstFiltered<1>(text, start)
           : variants == 2 ? firstFiltered<2>(text, start)
                           : firstFiltered<mostVariants>(text, start);
}

std::size_t TextPattern::last(std::u16string_view text, std::size_t start) const {
    if (what_.size() > text.size())
        return npos;
    start = std::min(start, text.size() - what_.size());
    const int variants = std::max(probes_[0].variants, probes_[1].variants);
    if (start + 1 < lane || variants > mostVariants)
        return lastPortable(text, start);
    return variants == 1   ? lastFiltered<1>(text, start)
           : variants == 2 ? lastFiltered<2>(text, start)
                           : lastFiltered<mostVariants>(text, start);
}

#else

std::size_t TextPattern::first(std::u16string_view text, std::size_t start) const {
    return firstPortable(text, start);
}

std::size_t TextPattern::last(std::u16string_view text, std::size_t start) const {
    return lastPortable(text, start);
}

#endif

} // namespace tavrin
