#include "parsers/StoredTags.h"

#include "platform/core/TextPattern.h"
#include "platform/core/TextScan.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <span>

namespace tavrin {

namespace {

constexpr std::size_t npos = std::string_view::npos;

/// What a unit means to the reading of a name.
enum class NameUnit : std::uint8_t { Inside, Ends, Unknown };

constexpr std::array<NameUnit, 0x80> asciiNameUnits = [] {
    std::array<NameUnit, 0x80> units{};
    for (char16_t c = 0; c < units.size(); ++c)
        units[c] = endsRawName(c) ? NameUnit::Ends : NameUnit::Inside;
    return units;
}();

template <class Unit>
NameUnit classify(Unit unit) {
    const std::size_t code = std::make_unsigned_t<Unit>(unit);
    if (code < asciiNameUnits.size())
        return asciiNameUnits[code];
    if constexpr (sizeof(Unit) == sizeof(char16_t))
        return endsRawName(unit) ? NameUnit::Ends : NameUnit::Inside;
    return NameUnit::Unknown;
}

/// Where "<" and ">" stand, in ascending order.
class Edges {
  public:
    template <class Unit>
    explicit Edges(std::basic_string_view<Unit> text)
        : room_(text.size() / usualDistance + piece),
          places_(std::make_unique_for_overwrite<std::uint32_t[]>(room_)) {
        for (std::size_t at = 0; at < text.size(); at += piece) {
            if (count_ + piece > room_)
                enlarge();
            count_ += scan::findEdges(text.substr(at, piece), static_cast<std::uint32_t>(at),
                                      places_.get() + count_);
        }
    }

    [[nodiscard]] std::size_t count() const { return count_; }
    [[nodiscard]] std::size_t operator[](std::size_t i) const { return places_[i]; }

  private:
    static constexpr std::size_t piece = 4096;
    static constexpr std::size_t usualDistance = 8;

    void enlarge() {
        auto larger = std::make_unique_for_overwrite<std::uint32_t[]>(2 * room_);
        std::copy_n(places_.get(), count_, larger.get());
        places_ = std::move(larger);
        room_ *= 2;
    }

    std::size_t room_;
    std::unique_ptr<std::uint32_t[]> places_;
    std::size_t count_ = 0;
};

/// The stored text of a chunk of lines.
template <class Unit>
struct StoredText {
    std::basic_string_view<Unit> text;
    bool unitsAreColumns; ///< else it is valid UTF-8
    bool isFirst;         ///< no line lies above
    /// Where lines begin that go on from the one before, in ascending order.
    std::vector<std::size_t> cuts;
    struct Page {
        std::size_t begin;
        int line; ///< the first, counted from that of the text
    };
    std::vector<Page> pages{}; ///< where it is known, in ascending order

    /// Where the units at `from` and at `last`, which no break divides, lie on one line.
    [[nodiscard]] bool areJoined(std::size_t from, std::size_t last) const {
        if (cuts.empty())
            return true;
        const auto cut = std::ranges::upper_bound(cuts, from);
        return cut == cuts.end() || *cut > last;
    }
    /// The end of the line around `at`, if a cut makes it; else somewhere behind.
    [[nodiscard]] std::size_t cutBehind(std::size_t at) const {
        if (cuts.empty())
            return text.size();
        const auto cut = std::ranges::upper_bound(cuts, at);
        return cut == cuts.end() ? text.size() : *cut;
    }
};

std::vector<std::size_t> cutsOf(const LineStore::StoredLines& lines) {
    std::vector<std::size_t> cuts;
    if (!lines.hasCuts)
        return cuts;
    std::size_t begin = 0;
    for (const std::size_t end : lines.lineEnds()) {
        const bool hasBreak = end > begin && (lines.bytes[end - 1] == '\n' || lines.bytes[end - 1] == '\r');
        if (!hasBreak && end < lines.bytes.size())
            cuts.push_back(end);
        begin = end;
    }
    return cuts;
}

/// Goes over places in ascending order and tells their lines and columns.
template <class Unit>
class Locator {
  public:
    explicit Locator(const StoredText<Unit>& stored) : stored_(stored) {}

    TextPos locate(std::size_t at) {
        moveToPageOf(at);
        const auto passed = stored_.text.substr(passed_, at - passed_);
        passed_ = at;
        if (const int breaks = countBreaks(passed); breaks > 0) {
            line_ += breaks;
            for (start_ = at; !isBreak(stored_.text[start_ - 1]); --start_) {
            }
        }
        for (; cut_ < stored_.cuts.size() && stored_.cuts[cut_] <= at; ++cut_) {
            start_ = std::max(start_, stored_.cuts[cut_]);
            ++line_;
        }
        const auto before = stored_.text.substr(start_, at - start_);
        return {line_, static_cast<int>(columns(before))};
    }

  private:
    /// Does not count the lines above the page.
    void moveToPageOf(std::size_t at) {
        const auto& pages = stored_.pages;
        const std::size_t before = nextPage_;
        while (nextPage_ < pages.size() && pages[nextPage_].begin <= at)
            ++nextPage_;
        if (nextPage_ == before)
            return;
        passed_ = start_ = pages[nextPage_ - 1].begin;
        line_ = pages[nextPage_ - 1].line;
        while (cut_ < stored_.cuts.size() && stored_.cuts[cut_] <= passed_)
            ++cut_;
    }

    static bool isBreak(Unit unit) { return unit == '\n' || unit == '\r'; }

    static int countBreaks(std::basic_string_view<Unit> text) {
        std::size_t count = scan::countUnit(text, Unit{'\n'});
        for (std::size_t at = scan::findUnit(text, Unit{'\r'}, 0); at != npos;
             at = scan::findUnit(text, Unit{'\r'}, at + 1))
            count += at + 1 == text.size() || text[at + 1] != '\n';
        return static_cast<int>(count);
    }

    std::size_t columns(std::basic_string_view<Unit> text) const {
        if (sizeof(Unit) > 1 || stored_.unitsAreColumns)
            return text.size();
        return utf16Length({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, true);
    }

    const StoredText<Unit>& stored_;
    int line_ = 0;
    std::size_t start_ = 0; ///< of the line
    std::size_t passed_ = 0;
    std::size_t cut_ = 0; ///< the next of the cuts
    std::size_t nextPage_ = 0;
};

/// TagWalk's walk over every ">", backwards.
template <class Unit>
class StoredWalk {
    using View = std::basic_string_view<Unit>;

  public:
    explicit StoredWalk(const StoredText<Unit>& stored)
        : stored_(stored), text_(stored.text), edges_(text_), next_(edges_.count()), tag_(next_) {}

    std::optional<TagNote::Walk> run(std::optional<TagMark> opening) {
        if (opening && !passOpening(*opening))
            return finish(npos);
        while (next_ > 0) {
            const std::size_t end = edges_[--next_];
            if (text_[end] == '<')
                continue;
            const Unit last = end > 0 && stored_.areJoined(end - 1, end) ? text_[end - 1] : Unit{0};
            if (last == '/' || last == '?')
                continue;
            if ((last == '-' || last == ']') && end > 1 && text_[end - 2] == last &&
                stored_.areJoined(end - 2, end)) {
                if (!passOpening(last == '-' ? TagMark::Comment : TagMark::Section))
                    return finish(npos);
                continue;
            }
            if (!findTag())
                return finish(end);
            if (passLeaf())
                continue;
            if (!takeTag(edges_[tag_], end))
                return {};
            if (walk_.stops)
                return finish(end);
        }
        return finish(npos);
    }

  private:
    struct Start {
        std::size_t tag;
        std::size_t end;
        View name;
    };
    struct End {
        std::size_t tag;
        std::size_t end;
    };

    /// Goes on before the nearest beginning of a comment or a section. False when there is none.
    [[nodiscard]] bool passOpening(TagMark opening) {
        const std::u16string_view what = textOf(opening);
        const std::size_t from = next_ < edges_.count() ? edges_[next_] : text_.size();
        const auto standsAt = [&](std::size_t at) {
            return at + what.size() <= from && std::equal(what.begin(), what.end(), text_.begin() + at) &&
                   stored_.areJoined(at, at + what.size() - 1);
        };
        while (next_ > 0)
            if (standsAt(edges_[--next_]))
                return true;
        walk_.opening = opening;
        return false;
    }

    /// The nearest "<" before the ">" that is looked at. False when there is none.
    [[nodiscard]] bool findTag() {
        if (tag_ < next_)
            return true; // it is that of the ">" before, which stands below
        for (tag_ = next_; tag_ > 0;)
            if (text_[edges_[--tag_]] == '<')
                return true;
        return false;
    }

    /// Passes an end tag with the start tag right above it, where the two are plainly a pair.
    [[nodiscard]] bool passLeaf() {
        if (tag_ + 1 != next_ || next_ < 3)
            return false;
        const End endTag{edges_[tag_], edges_[next_]};
        const std::size_t above = edges_[next_ - 2];
        const std::size_t start = edges_[next_ - 3];
        if (text_[endTag.tag + 1] != '/' || text_[above] != '>' || text_[start] != '<' ||
            mayEndOther(text_[above - 1]) || text_[start + 1] == '/' || !isPlainlyClosedBy(start, endTag))
            return false;
        next_ -= 3;
        return true;
    }

    /// A ">" behind the unit may end what is no tag.
    static bool mayEndOther(Unit unit) { return unit == '/' || unit == '?' || unit == '-' || unit == ']'; }

    /// The name behind the "<" at `tag`, as it is typed; nothing when it can't be told.
    [[nodiscard]] std::optional<View> rawName(std::size_t tag, std::size_t end) const {
        const std::size_t bound = std::min(end, stored_.cutBehind(tag)); // a ">" ends a name anyway
        std::size_t at = tag + 1;
        while (at < bound && classify(text_[at]) == NameUnit::Inside)
            ++at;
        if (at < bound && classify(text_[at]) == NameUnit::Unknown)
            return {};
        return text_.substr(tag + 1, at - tag - 1);
    }

    /// Whether the start tag has the name of an end tag, told without looking for where names end:
    /// the same units stand in both up to the ">" of the end tag, and a name ends there in the start tag too.
    /// False says nothing.
    [[nodiscard]] bool isPlainlyClosedBy(std::size_t tag, const End& endTag) const {
        const std::size_t length = endTag.end - endTag.tag - 2;
        const View name = text_.substr(tag + 1);
        return stored_.cuts.empty() && length > 0 && length < name.size() &&
               classify(name.front()) == NameUnit::Inside && classify(name[length]) == NameUnit::Ends &&
               areEqual(tag + 1, endTag.tag + 2, length);
    }

    /// Compares a start tag's name with one below it; most names fit into a word.
    [[nodiscard]] bool areEqual(std::size_t above, std::size_t below, std::size_t length) const {
        using Word = std::uint64_t;
        constexpr std::size_t wordUnits = sizeof(Word) / sizeof(Unit);
        const Unit* const one = text_.data() + above;
        const Unit* const other = text_.data() + below;
        if (length > wordUnits || below + wordUnits > text_.size())
            return std::equal(one, one + length, other);
        Word first = 0;
        Word second = 0;
        std::memcpy(&first, one, sizeof(Word));
        std::memcpy(&second, other, sizeof(Word));
        return (first ^ second) << (8 * (sizeof(Word) - length * sizeof(Unit))) == 0;
    }

    /// Takes the tag into account. False when a name can't be told.
    [[nodiscard]] bool takeTag(std::size_t tag, std::size_t end) {
        if (text_[tag + 1] == '/' && stored_.areJoined(tag, tag + 1)) {
            ends_.push_back({tag, end});
            return true;
        }
        if (!ends_.empty() && isPlainlyClosedBy(tag, ends_.back())) {
            ends_.pop_back();
            return true;
        }
        const auto name = rawName(tag, end);
        if (!name)
            return false;
        walk_.stops = name->empty();
        if (walk_.stops)
            return true;
        if (ends_.empty()) {
            starts_.push_back({tag, end, *name});
            return true;
        }
        const auto endName = rawName(ends_.back().tag, ends_.back().end);
        if (endName && endName->substr(1) == *name)
            ends_.pop_back();
        return endName.has_value();
    }

    /// `end`: the ">" with which the walk could not go on; npos when it has passed all.
    [[nodiscard]] std::optional<TagNote::Walk> finish(std::size_t end) {
        if (stored_.pages.size() > 1 && starts_.size() + ends_.size() > mostTagsKept) {
            walk_ = {};
            walk_.isTooLong = true;
            return std::move(walk_);
        }
        if ((end != npos || walk_.opening) && stored_.isFirst)
            walk_.stops = true; // what is missing is missing for good
        Locator places(stored_);
        if (end != npos && !walk_.stops) {
            walk_.rest = Locator(places).locate(end);
            ++walk_.rest.col;
        }
        walk_.starts.reserve(starts_.size());
        for (auto start = starts_.rbegin(); start != starts_.rend(); ++start) {
            const TextPos tag = places.locate(start->tag);
            walk_.starts.push_back(
                {tag, Locator(places).locate(start->end), {start->name.begin(), start->name.end()}});
        }
        std::ranges::reverse(walk_.starts);
        walk_.ends.reserve(ends_.size());
        for (const End& endTag : ends_) {
            const auto name = rawName(endTag.tag, endTag.end);
            if (!name)
                return {};
            walk_.ends.emplace_back(name->begin() + 1, name->end());
        }
        return std::move(walk_);
    }

    const StoredText<Unit>& stored_;
    View text_;
    Edges edges_;
    std::size_t next_;          ///< the edges from this one on were passed
    std::size_t tag_;           ///< the edge that is the last "<" looked at
    std::vector<End> ends_;     ///< that wait for their start tags
    std::vector<Start> starts_; ///< the lowest first
    TagNote::Walk walk_;
};

/// `find(start)`: the first "xmlns" at or after `start`, or npos.
template <class Unit, class Find>
std::vector<std::u16string> declarations(std::basic_string_view<Unit> text, Find find) {
    static constexpr Unit ends[] = {'=', '\r', '\n', 0};
    constexpr std::size_t length = 5;
    std::vector<std::u16string> names;
    for (std::size_t at = find(0); at != npos; at = find(at + 1)) {
        const auto rest = text.substr(at + length);
        const std::size_t end = rest.find_first_of(ends);
        if (end == npos || rest[end] != '=')
            continue;
        const auto suffix = rest.substr(0, end);
        std::u16string& name = names.emplace_back(suffix.begin(), suffix.end());
        std::ranges::transform(name, name.begin(), foldCase);
    }
    return names;
}

std::optional<std::vector<std::u16string>> declarationsIn(std::string_view bytes, bool isAscii) {
    const auto find = [&](std::string_view what, std::size_t start) {
        return scan::findAsciiFolded(bytes, what, start);
    };
    if (find("xmln", 0) == npos) // "s" is what another character folds to
        return std::vector<std::u16string>();
    if (isAscii)
        return declarations(bytes, [&](std::size_t start) { return find("xmlns", start); });
    return {};
}

} // namespace

std::optional<bool> storedTextMayHold(const Buffer& buffer, int line, TagMark mark) {
    const std::u16string_view what = textOf(mark);
    if (const auto lines = buffer.getStoredLines(line))
        return scan::findBytes(lines->bytes, std::string(what.begin(), what.end()), 0) != npos;
    if (const auto units = buffer.getStoredUnits(line))
        return scan::findText(units->text, what, 0) != npos;
    return {};
}

std::optional<TagNote::Walk> walkStoredTags(const Buffer& buffer, int line, std::optional<TagMark> opening) {
    if (const auto lines = buffer.getStoredLines(line); lines && lines->isUtf8)
        return StoredWalk(StoredText<char>{lines->bytes, lines->isAscii, lines->first == 0, cutsOf(*lines)})
            .run(opening);
    if (const auto units = buffer.getStoredUnits(line))
        return StoredWalk(StoredText<char16_t>{units->text, true, units->first == 0, {}}).run(opening);
    return {};
}

std::optional<std::vector<std::u16string>> storedDeclarations(const Buffer& buffer, int line) {
    if (const auto lines = buffer.getStoredLines(line))
        return declarationsIn(lines->bytes, lines->isAscii);
    if (const auto units = buffer.getStoredUnits(line)) {
        static const TextPattern pattern(u"xmlns", false);
        return declarations(units->text,
                            [&](std::size_t start) { return pattern.first(units->text, start); });
    }
    return {};
}

std::unique_ptr<TagNote> noteOnStoredPages(std::span<const LineStore::StoredLines> pages) {
    LineStore::StoredLines all = pages.front();
    const char* const begin = all.bytes.data();
    const std::string_view last = pages.back().bytes;
    all.bytes = {begin, static_cast<std::size_t>(last.data() + last.size() - begin)};
    all.end = pages.back().end;
    all.isAscii = std::ranges::all_of(pages, &LineStore::StoredLines::isAscii);
    all.hasCuts = std::ranges::any_of(pages, &LineStore::StoredLines::hasCuts);
    if (!std::ranges::all_of(pages, &LineStore::StoredLines::isUtf8) || (all.hasCuts && !all.isAscii))
        return {};
    auto note = std::make_unique<TagNote>();
    StoredText<char> text{all.bytes, all.isAscii, all.first == 0, cutsOf(all)};
    text.pages.reserve(pages.size());
    for (const LineStore::StoredLines& page : pages)
        text.pages.push_back({static_cast<std::size_t>(page.bytes.data() - begin), page.first - all.first});
    if (auto walk = StoredWalk(text).run({}))
        note->walks.front() = std::make_unique<TagNote::Walk>(std::move(*walk));
    if (const auto names = declarationsIn(all.bytes, all.isAscii)) {
        note->declaredBelow.emplace();
        for (const std::u16string& name : *names)
            note->declaredBelow->add(name);
    }
    return note;
}

} // namespace tavrin
