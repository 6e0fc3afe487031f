#include "parsers/TagWalk.h"

#include "parsers/StoredTags.h"
#include "platform/core/CharacterClass.h"
#include "platform/core/TextScan.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

namespace tavrin {

namespace {

constexpr std::u16string_view declarationStart = u"xmlns";

std::u16string folded(std::u16string_view text) {
    std::u16string result(text);
    std::ranges::transform(result, result.begin(), foldCase);
    return result;
}

/// Whether "xmlns" stands at `at`, ignoring case.
bool isDeclarationAt(std::u16string_view text, std::size_t at) {
    return (text[at] | 0x20) == u'x' && folded(text.substr(at, declarationStart.size())) == declarationStart;
}

/// Where a note keeps the walk.
std::size_t walkIndex(std::optional<TagMark> opening) {
    return !opening ? 0 : *opening == TagMark::Comment ? 1 : 2;
}

} // namespace

/// What the walk does at one ">".
struct TagWalk::Step {
    enum Kind {
        Skip,      ///< an empty element, an instruction
        Block,     ///< a comment, a section
        Tag,       ///< a start or end tag
        Stop,      ///< nothing further up can be told
        OutOfReach ///< what belongs to it stands above the lines that may be read
    };
    Kind kind;
    TextPos next{};            ///< the next ">" is searched before this
    TextPos tag{};             ///< the "<" of a Tag
    std::u16string_view raw{}; ///< its name, with the "/" of an end tag
    TagMark opening{};         ///< of a Block
};

/// A walk and how far it has come.
struct TagWalk::Course {
    TextPos from;        ///< what is above is still ahead
    int firstLine;       ///< nothing above is read
    int mostHeight;      ///< of chunks that are passed in one step; -1: none
    std::int64_t passed; ///< lines before the first step that count as passed
    int start = from.line;
    TagMatcher<std::u16string> ends{};
    std::optional<TagMark> opening{}; ///< what is searched before the walk goes on
};

// Chunks

TagNote* TagWalk::knownNote(const LineChunk& chunk) const {
    return static_cast<TagNote*>(buffer_.getChunkNote(chunk));
}

TagNote& TagWalk::noteOn(const LineChunk& chunk) const {
    if (!knownNote(chunk))
        buffer_.setChunkNote(chunk, std::make_unique<TagNote>());
    return *knownNote(chunk);
}

/// The chunks of the next lower height, from the bottom up.
template <class Visit>
void TagWalk::forEachChild(const LineChunk& chunk, Visit&& visit) const {
    for (int line = chunk.end - 1; line >= chunk.first;) {
        const LineChunk child = buffer_.getChunkEndingWith(line, chunk.height - 1);
        visit(child);
        line = child.first - 1;
    }
}

/// The nearest line that is the last of a page which does not lack what is searched: `line`, the last of a
/// page, or one above it; less than `firstLine` when there is none. The search began at the line `start`.
/// `lacks(chunk, mayLearn)`: false also for what is not known and must not be learnt.
template <class Lacks>
int TagWalk::lineBefore(int line, int firstLine, int start, Lacks&& lacks) const {
    while (line >= firstLine) {
        std::optional<LineChunk> passed;
        for (int height = buffer_.getChunkHeightEndingWith(line); height >= 0 && !passed; --height) {
            const LineChunk chunk = buffer_.getChunkEndingWith(line, height);
            const bool mayLearn = height == 0 || chunk.end - chunk.first <= start - line;
            if (chunk.first >= firstLine && lacks(chunk, mayLearn))
                passed = chunk;
        }
        if (!passed)
            return line;
        line = passed->first - 1;
    }
    return line;
}

// Finding

std::optional<TextPos> TagWalk::findInPage(std::u16string_view what, TextPos from, int firstLine) const {
    for (int line = from.line; line >= firstLine; --line) {
        if (line == from.line && from.col < static_cast<int>(what.size()))
            continue; // unread
        const std::u16string_view text = buffer_.getLineText(line);
        const std::size_t start =
            line == from.line ? static_cast<std::size_t>(from.col) - what.size() : text.size();
        const std::size_t at = text.rfind(what, start);
        if (at != text.npos)
            return TextPos{line, static_cast<int>(at)};
    }
    return std::nullopt;
}

std::optional<TextPos> TagWalk::findBefore(TagMark mark, TextPos from, int firstLine) const {
    const auto lacks = [&](const LineChunk& chunk, bool mayLearn) {
        const TagNote* note = knownNote(chunk);
        const bool isKnown = note && note->marks[static_cast<std::size_t>(mark)];
        return (isKnown || mayLearn) && !mayHold(chunk, mark);
    };
    const int start = from.line;
    while (true) {
        const int first = buffer_.chunkAt(from.line).first;
        // The page of the place itself is read, so that a search nearby makes no notes.
        if (const auto found = findInPage(textOf(mark), from, std::max(first, firstLine)))
            return found;
        const int line = lineBefore(first - 1, firstLine, start, lacks);
        if (line < firstLine)
            return std::nullopt;
        from = endOfLine(line);
    }
}

std::optional<TextPos> TagWalk::findDeclarationBefore(std::u16string_view suffix, TextPos from) const {
    const std::u16string wanted = folded(suffix);
    const int length = static_cast<int>(declarationStart.size() + wanted.size()) + 1;
    const auto lacks = [&](const LineChunk& chunk, bool mayLearn) {
        if (chunk.height == 0)
            return !std::ranges::binary_search(declaredIn(chunk), wanted);
        const TagNote* note = knownNote(chunk);
        return ((note && note->declaredBelow) || mayLearn) && !declaredBelow(chunk).mayHold(wanted);
    };
    for (int line = from.line; line >= 0;) {
        const int first = buffer_.chunkAt(line).first;
        for (; line >= first; --line) {
            const std::u16string_view text = buffer_.getLineText(line);
            for (int at = (line == from.line ? from.col : static_cast<int>(text.size())) - length; at >= 0;
                 --at) {
                const auto start = static_cast<std::size_t>(at);
                if (isDeclarationAt(text, start) &&
                    text[start + static_cast<std::size_t>(length) - 1] == u'=' &&
                    folded(text.substr(start + declarationStart.size(), wanted.size())) == wanted)
                    return TextPos{line, at};
            }
        }
        line = lineBefore(line, 0, from.line, lacks);
    }
    return std::nullopt;
}

std::u16string_view TagWalk::rawName(TextPos tag, TextPos until) const {
    const std::u16string_view text = buffer_.getLineText(tag.line);
    const std::size_t bound = tag.line == until.line ? static_cast<std::size_t>(until.col) : text.size();
    const std::size_t start = static_cast<std::size_t>(tag.col) + 1;
    std::size_t end = start;
    while (end < bound && !endsRawName(text[end]))
        ++end;
    return start < bound ? text.substr(start, end - start) : std::u16string_view();
}

// Walking

/// Looks at the ">" at `end` and reads no line above `firstLine`.
TagWalk::Step TagWalk::step(TextPos end, int firstLine) const {
    const std::u16string_view text = buffer_.getLineText(end.line);
    const std::u16string_view before = text.substr(0, static_cast<std::size_t>(end.col));
    // A first line has nothing above it; what it lacks is missing for good.
    const Step missing{firstLine > 0 ? Step::OutOfReach : Step::Stop};
    if (before.ends_with(u'/') || before.ends_with(u'?'))
        return {Step::Skip, end};
    for (const auto& [close, open] :
         {std::pair<std::u16string_view, TagMark>{u"--", TagMark::Comment}, {u"]]", TagMark::Section}})
        if (before.ends_with(close))
            return {Step::Block, end, {}, {}, open};
    const auto tag = findBefore(TagMark::Less, end, firstLine);
    if (!tag)
        return missing;
    const std::u16string_view raw = rawName(*tag, end);
    if (raw.empty())
        return {Step::Stop};
    return {Step::Tag, end, *tag, raw};
}

/// The chunk that the walk passes when it comes from below to its last line, the last of a page.
LineChunk TagWalk::chunkToPass(int line, const Course& course) const {
    const std::int64_t passed = course.passed + course.start - line;
    for (int height = std::min(course.mostHeight, buffer_.getChunkHeightEndingWith(line)); height > 0;
         --height) {
        const LineChunk chunk = buffer_.getChunkEndingWith(line, height);
        const TagNote* note = knownNote(chunk);
        const bool isKnown = note && note->walks[walkIndex(course.opening)];
        if ((isKnown || chunk.end - chunk.first <= passed) && !walkOf(chunk, course.opening).isTooLong)
            return chunk;
    }
    return buffer_.chunkAt(line);
}

/// `take(tag, end, name)` is told of each start tag for which no end tag waits; true ends the walk.
template <class Take>
TagWalk::Outcome TagWalk::walkBack(Course& course, Take&& take) const {
    TextPos& from = course.from;
    while (true) {
        const LineChunk page = buffer_.chunkAt(from.line);
        int first = page.first; // of the lines that may hold what comes next
        std::optional<TextPos> found;
        if (course.mostHeight >= 0 && from == endOfLine(page.end - 1)) { // all of it lies above
            const LineChunk chunk = chunkToPass(from.line, course);
            const TagNote::Walk& known = walkOf(chunk, course.opening);
            const auto absolute = [&](TextPos pos) { return TextPos{pos.line + chunk.first, pos.col}; };
            for (const TagNote::StartTag& start : known.starts)
                if (course.ends.meets(std::u16string_view(start.name)) &&
                    take(absolute(start.tag), absolute(start.end), start.name))
                    return Outcome::Taken;
            for (const std::u16string& name : known.ends)
                course.ends.push(name);
            if (known.stops)
                return Outcome::Stopped;
            course.opening = known.opening;
            first = chunk.first;
            if (known.rest != TextPos{}) {
                from = absolute(known.rest);
                first = buffer_.chunkAt(from.line).first;
                found = findInPage(u">", from, first);
            }
        } else {
            found = findInPage(course.opening ? textOf(*course.opening) : u">", from, first);
        }
        if (!found && first <= course.firstLine) {
            if (!course.opening)
                return Outcome::Through;
            return course.firstLine > 0 ? Outcome::OutOfReach : Outcome::Stopped;
        }
        if (!found) {
            from = endOfLine(first - 1);
            continue;
        }
        if (course.opening) {
            course.opening.reset();
            from = *found;
            continue;
        }
        const Step here = step(*found, course.firstLine);
        if (here.kind == Step::OutOfReach)
            return Outcome::OutOfReach;
        if (here.kind == Step::Stop)
            return Outcome::Stopped;
        if (here.kind == Step::Tag) {
            if (here.raw.starts_with(u'/'))
                course.ends.push(here.raw.substr(1));
            else if (course.ends.meets(here.raw) && take(here.tag, *found, here.raw))
                return Outcome::Taken;
        } else if (here.kind == Step::Block) {
            course.opening = here.opening;
        }
        from = here.next;
    }
}

std::optional<TagWalk::OpenTag> TagWalk::findParent(TextPos from) const {
    std::optional<OpenTag> parent;
    Course course{from, 0, std::numeric_limits<int>::max(), 0};
    walkBack(course, [&](TextPos tag, TextPos end, std::u16string_view) {
        parent = OpenTag{tag, end};
        return true;
    });
    return parent;
}

bool TagWalk::findSiblingsBefore(TextPos from, int firstLine, std::size_t most,
                                 std::vector<TextPos>& tags) const {
    TagMatcher<std::u16string> open;
    while (const auto end = findBefore(TagMark::Greater, from)) {
        if (end->line < firstLine)
            return false;
        const Step here = step(*end, 0);
        if (here.kind == Step::Stop)
            return true;
        from = here.kind == Step::Tag ? here.tag : here.next;
        if (here.kind == Step::Block) {
            const auto opening = findBefore(here.opening, *end);
            if (!opening)
                return true;
            from = *opening;
        }
        const bool isEmptyElement =
            here.kind == Step::Skip && end->col > 0 &&
            buffer_.getLineText(end->line)[static_cast<std::size_t>(end->col) - 1] == u'/';
        std::optional<TextPos> sibling;
        if (isEmptyElement && open.isEmpty()) {
            sibling = findBefore(TagMark::Less, *end);
        } else if (here.kind == Step::Tag && here.raw.starts_with(u'/')) {
            open.push(here.raw.substr(1));
        } else if (here.kind == Step::Tag) {
            if (open.meets(here.raw))
                return true; // the parent
            if (open.isEmpty())
                sibling = here.tag;
        }
        if (!sibling)
            continue;
        if (sibling->line < firstLine || tags.size() == most)
            return false;
        tags.push_back(*sibling);
    }
    return true;
}

// Notes

void TagWalk::note(int line) const {
    const int last = buffer_.chunkAt(line).end - 1;
    for (int height = 0; height <= buffer_.getChunkHeightEndingWith(last); ++height) {
        const LineChunk chunk = buffer_.getChunkEndingWith(last, height);
        (void)walkOf(chunk, std::nullopt);
        if (height == 0)
            (void)declaredIn(chunk);
        else
            (void)declaredBelow(chunk);
    }
}

bool TagWalk::mayHold(const LineChunk& chunk, TagMark mark) const {
    std::optional<bool>& known = noteOn(chunk).marks[static_cast<std::size_t>(mark)];
    if (!known && chunk.height == 0)
        known = storedTextMayHold(buffer_, chunk.first, mark);
    if (!known) {
        bool holds = false;
        if (chunk.height > 0)
            forEachChild(chunk, [&](const LineChunk& child) { holds = mayHold(child, mark) || holds; });
        else
            for (int line = chunk.first; line < chunk.end && !holds; ++line)
                holds = scan::findText(buffer_.getLineText(line), textOf(mark), 0) != std::u16string::npos;
        known = holds;
    }
    return *known;
}

const TagNote::Walk& TagWalk::walkOf(const LineChunk& chunk, std::optional<TagMark> opening) const {
    std::unique_ptr<TagNote::Walk>& known = noteOn(chunk).walks[walkIndex(opening)];
    if (!known) {
        auto walk = chunk.height == 0 ? walkStoredTags(buffer_, chunk.first, opening) : std::nullopt;
        known = std::make_unique<TagNote::Walk>(walk ? std::move(*walk) : walkChunk(chunk, opening));
    }
    return *known;
}

TagNote::Walk TagWalk::walkChunk(const LineChunk& chunk, std::optional<TagMark> opening) const {
    const auto relative = [&](TextPos pos) { return TextPos{pos.line - chunk.first, pos.col}; };
    const auto isTooMuch = [&](std::size_t tags) { return chunk.height > 0 && tags > mostTagsKept; };
    TagNote::Walk walk;
    Course course{endOfLine(chunk.end - 1), chunk.first, chunk.height - 1, chunk.end - chunk.first};
    course.opening = opening;
    const Outcome outcome = walkBack(course, [&](TextPos tag, TextPos end, std::u16string_view name) {
        walk.starts.push_back({relative(tag), relative(end), std::u16string(name)});
        return isTooMuch(walk.starts.size());
    });
    walk.ends = course.ends.takeNames();
    if (isTooMuch(walk.starts.size() + walk.ends.size())) {
        walk = {};
        walk.isTooLong = true;
        return walk;
    }
    walk.stops = outcome == Outcome::Stopped;
    if (outcome == Outcome::OutOfReach) {
        walk.opening = course.opening;
        if (!walk.opening)
            walk.rest = relative(course.from);
    }
    return walk;
}

const NameFilter& TagWalk::declaredBelow(const LineChunk& chunk) const {
    std::optional<NameFilter>& known = noteOn(chunk).declaredBelow;
    if (!known) {
        NameFilter names;
        forEachChild(chunk, [&](const LineChunk& child) {
            if (child.height > 0)
                names.add(declaredBelow(child));
            else
                for (const std::u16string& name : declaredIn(child))
                    names.add(name);
        });
        known = names;
    }
    return *known;
}

const std::vector<std::u16string>& TagWalk::declaredIn(const LineChunk& page) const {
    TagNote& note = noteOn(page);
    if (!note.declared) {
        auto names = storedDeclarations(buffer_, page.first);
        if (!names)
            names = readDeclarations(page);
        std::ranges::sort(*names);
        names->erase(std::unique(names->begin(), names->end()), names->end());
        note.declared = std::move(names);
    }
    return *note.declared;
}

std::vector<std::u16string> TagWalk::readDeclarations(const LineChunk& page) const {
    std::vector<std::u16string> names;
    for (int line = page.first; line < page.end; ++line) {
        const std::u16string_view text = buffer_.getLineText(line);
        if (text.find(u'=') == text.npos)
            continue;
        for (std::size_t at = 0; at < text.size(); ++at) {
            const std::size_t suffix = at + declarationStart.size();
            if (!isDeclarationAt(text, at))
                continue;
            const std::size_t equals = text.find(u'=', suffix);
            if (equals == text.npos)
                break;
            names.push_back(folded(text.substr(suffix, equals - suffix)));
        }
    }
    return names;
}

} // namespace tavrin
