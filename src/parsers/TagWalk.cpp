#include "parsers/TagWalk.h"

#include "parsers/StoredTags.h"
#include "platform/core/CharacterClass.h"
#include "platform/core/TextScan.h"

#include <algorithm>
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

} // namespace

/// What the walk does at one ">".
struct TagWalk::Step {
    enum Kind {
        Skip,      ///< an empty element, an instruction, a comment, a section
        Tag,       ///< a start or end tag
        Stop,      ///< nothing further up can be told
        OutOfReach ///< what belongs to it stands above the lines that may be read
    };
    Kind kind;
    TextPos next{};            ///< the next ">" is searched before this
    TextPos tag{};             ///< the "<" of a Tag
    std::u16string_view raw{}; ///< its name, with the "/" of an end tag
};

// Finding

std::optional<TextPos> TagWalk::findInChunk(std::u16string_view what, TextPos from, int firstLine) const {
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

std::optional<TextPos> TagWalk::findBefore(std::u16string_view what, TextPos from) const {
    const bool isGreater = what == u">";
    while (true) {
        const LineChunk chunk = buffer_.chunkAt(from.line);
        // The chunk of the place itself is read, so that a search nearby makes no notes.
        if (const auto found = findInChunk(what, from, chunk.first))
            return found;
        int line = chunk.first - 1;
        while (line >= 0) {
            const TagNote& note = noteAt(line);
            if (isGreater ? note.hasGreater : note.hasLess)
                break;
            line = buffer_.chunkAt(line).first - 1;
        }
        if (line < 0)
            return std::nullopt;
        from = endOfLine(line);
    }
}

std::optional<TextPos> TagWalk::findDeclarationBefore(std::u16string_view suffix, TextPos from) const {
    const std::u16string wanted = folded(suffix);
    const int length = static_cast<int>(declarationStart.size() + wanted.size()) + 1;
    bool first = true;
    for (int line = from.line; line >= 0;) {
        const LineChunk chunk = buffer_.chunkAt(line);
        const bool worthReading = first || std::ranges::binary_search(declaredAt(line), wanted);
        first = false;
        for (; worthReading && line >= chunk.first; --line) {
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
        line = chunk.first - 1;
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
    const auto find = [&](std::u16string_view what) {
        return firstLine > 0 ? findInChunk(what, end, firstLine) : findBefore(what, end);
    };
    const Step missing{firstLine > 0 ? Step::OutOfReach : Step::Stop};
    if (before.ends_with(u'/') || before.ends_with(u'?'))
        return {Step::Skip, end};
    for (const auto& [close, open] :
         {std::pair<std::u16string_view, std::u16string_view>{u"--", u"<!--"}, {u"]]", u"<!["}})
        if (before.ends_with(close)) {
            const auto start = find(open);
            return start ? Step{Step::Skip, *start} : missing;
        }
    const auto tag = find(u"<");
    if (!tag)
        return missing;
    const std::u16string_view raw = rawName(*tag, end);
    if (raw.empty())
        return {Step::Stop};
    return {Step::Tag, end, *tag, raw};
}

std::optional<TagWalk::OpenTag> TagWalk::findParent(TextPos from) const {
    TagMatcher<std::u16string> open;
    while (true) {
        const LineChunk chunk = buffer_.chunkAt(from.line);
        if (from == endOfLine(chunk.end - 1)) { // the whole chunk lies above: take what is known of it
            const TagNote::Walk& known = walkAt(from.line);
            for (const TagNote::StartTag& start : known.starts)
                if (open.meets(std::u16string_view(start.name)))
                    return OpenTag{{start.tag.line + chunk.first, start.tag.col},
                                   {start.end.line + chunk.first, start.end.col}};
            for (const std::u16string& name : known.ends)
                open.push(name);
            if (known.stops)
                return std::nullopt;
            from = {known.rest.line + chunk.first, known.rest.col};
        }
        const auto end = findInChunk(u">", from, chunk.first);
        if (!end) {
            if (chunk.first == 0)
                return std::nullopt;
            from = endOfLine(chunk.first - 1);
            continue;
        }
        const Step here = step(*end, 0);
        if (here.kind == Step::Stop)
            return std::nullopt;
        if (here.kind == Step::Tag) {
            if (here.raw.starts_with(u'/'))
                open.push(here.raw.substr(1));
            else if (open.meets(here.raw))
                return OpenTag{here.tag, *end};
        }
        from = here.next;
    }
}

bool TagWalk::findSiblingsBefore(TextPos from, int firstLine, std::size_t most,
                                 std::vector<TextPos>& tags) const {
    TagMatcher<std::u16string> open;
    while (const auto end = findBefore(u">", from)) {
        if (end->line < firstLine)
            return false;
        const Step here = step(*end, 0);
        if (here.kind == Step::Stop)
            return true;
        from = here.kind == Step::Tag ? here.tag : here.next;
        const bool isEmptyElement =
            here.kind == Step::Skip && end->col > 0 &&
            buffer_.getLineText(end->line)[static_cast<std::size_t>(end->col) - 1] == u'/';
        std::optional<TextPos> sibling;
        if (isEmptyElement && open.isEmpty()) {
            sibling = findBefore(u"<", *end);
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

TagNote& TagWalk::noteAt(int line) const {
    ChunkNote* known = buffer_.getChunkNote(line);
    if (!known) {
        const LineChunk chunk = buffer_.chunkAt(line);
        auto note = std::make_unique<TagNote>();
        if (const auto marks = storedTagMarks(buffer_, line)) {
            note->hasLess = marks->less;
            note->hasGreater = marks->greater;
        } else {
            for (int l = chunk.first; l < chunk.end; ++l) {
                const std::u16string_view text = buffer_.getLineText(l);
                note->hasLess = note->hasLess || scan::findUnit(text, u'<', 0) != text.npos;
                note->hasGreater = note->hasGreater || scan::findUnit(text, u'>', 0) != text.npos;
            }
        }
        known = note.get();
        buffer_.setChunkNote(line, std::move(note));
    }
    return static_cast<TagNote&>(*known);
}

const TagNote::Walk& TagWalk::walkAt(int line) const {
    TagNote& note = noteAt(line);
    if (!note.walk) {
        note.walk = walkStoredTags(buffer_, line);
        if (!note.walk)
            note.walk = walkChunk(buffer_.chunkAt(line));
    }
    return *note.walk;
}

const std::vector<std::u16string>& TagWalk::declaredAt(int line) const {
    TagNote& note = noteAt(line);
    if (!note.declared) {
        auto names = storedDeclarations(buffer_, line);
        if (!names)
            names = readDeclarations(buffer_.chunkAt(line));
        std::ranges::sort(*names);
        names->erase(std::unique(names->begin(), names->end()), names->end());
        note.declared = std::move(names);
    }
    return *note.declared;
}

std::vector<std::u16string> TagWalk::readDeclarations(LineChunk chunk) const {
    std::vector<std::u16string> names;
    for (int line = chunk.first; line < chunk.end; ++line) {
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

TagNote::Walk TagWalk::walkChunk(LineChunk chunk) const {
    const auto relative = [&](TextPos pos) { return TextPos{pos.line - chunk.first, pos.col}; };
    TagNote::Walk walk;
    TagMatcher<std::u16string> ends;
    TextPos from = endOfLine(chunk.end - 1);
    while (const auto end = findInChunk(u">", from, chunk.first)) {
        // A first chunk has nothing above it; what it lacks is missing for good.
        const Step here = step(*end, chunk.first);
        if (here.kind == Step::OutOfReach) {
            walk.rest = relative(from);
            break;
        }
        if (here.kind == Step::Stop) {
            walk.stops = true;
            break;
        }
        if (here.kind == Step::Tag) {
            if (here.raw.starts_with(u'/'))
                ends.push(here.raw.substr(1));
            else if (ends.meets(here.raw))
                walk.starts.push_back({relative(here.tag), relative(*end), std::u16string(here.raw)});
        }
        from = here.next;
    }
    walk.ends = ends.takeNames();
    return walk;
}

} // namespace tavrin
