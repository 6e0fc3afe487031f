#include "parsers/TagWalk.h"

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

struct TagWalk::Note : ChunkNote {
    struct StartTag {
        TextPos tag; ///< lines count from the chunk's first
        TextPos end;
        std::u16string name;
    };
    bool hasLess = false;
    bool hasGreater = false;
    std::vector<std::u16string> declared; ///< folded text between "xmlns" and "=" of each declaration
    /// Start tags without an end tag in the chunk, from the bottom up: each closes the end tag left open by
    /// the lines below if the names are equal, is the parent if there is none left, and else counts for
    /// nothing.
    std::vector<StartTag> starts;
    std::vector<std::u16string> ends; ///< then, names of end tags without a start tag, the lowest first
    bool stops = false;               ///< then, the walk is over
    TextPos rest; ///< else: ">" before this still have to be walked one by one; the chunk's start: none
};

/// The stack of end tags that wait for their start tags.
class TagWalk::Matcher {
  public:
    void push(std::u16string_view endTag) { names_.emplace_back(endTag); }
    /// True when the start tag is the parent: no end tag waits.
    bool meets(std::u16string_view startTag) {
        if (names_.empty())
            return true;
        if (names_.back() == startTag)
            names_.pop_back();
        return false;
    }
    [[nodiscard]] bool isEmpty() const { return names_.empty(); }
    [[nodiscard]] std::vector<std::u16string>& names() { return names_; }

  private:
    std::vector<std::u16string> names_;
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
            const Note& note = noteAt(line);
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
        const bool worthReading =
            first || std::ranges::find(noteAt(line).declared, wanted) != noteAt(line).declared.end();
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
    for (; end < bound; ++end) {
        const char16_t c = text[end];
        const bool inName = c == u':' || c == u'-' || c == u'/' || c == u'_';
        if (!inName && (isSpace(c) || isPunct(c)))
            break;
    }
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
    Matcher open;
    while (true) {
        const LineChunk chunk = buffer_.chunkAt(from.line);
        if (from == endOfLine(chunk.end - 1)) { // the whole chunk lies above: take what is known of it
            const Note& note = noteAt(from.line);
            for (const Note::StartTag& start : note.starts)
                if (open.meets(start.name))
                    return OpenTag{{start.tag.line + chunk.first, start.tag.col},
                                   {start.end.line + chunk.first, start.end.col}};
            for (const std::u16string& name : note.ends)
                open.push(name);
            if (note.stops)
                return std::nullopt;
            from = {note.rest.line + chunk.first, note.rest.col};
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
    Matcher open;
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

const TagWalk::Note& TagWalk::noteAt(int line) const {
    const ChunkNote* note = buffer_.getChunkNote(line);
    if (!note) {
        buffer_.setChunkNote(line, makeNote(buffer_.chunkAt(line)));
        note = buffer_.getChunkNote(line);
    }
    return static_cast<const Note&>(*note);
}

std::unique_ptr<TagWalk::Note> TagWalk::makeNote(LineChunk chunk) const {
    auto note = std::make_unique<Note>();
    for (int line = chunk.first; line < chunk.end; ++line) {
        const std::u16string_view text = buffer_.getLineText(line);
        note->hasLess = note->hasLess || scan::findUnit(text, u'<', 0) != text.npos;
        note->hasGreater = note->hasGreater || scan::findUnit(text, u'>', 0) != text.npos;
        if (text.find(u'=') == text.npos)
            continue;
        for (std::size_t at = 0; at < text.size(); ++at) {
            const std::size_t suffix = at + declarationStart.size();
            if (!isDeclarationAt(text, at))
                continue;
            const std::size_t equals = text.find(u'=', suffix);
            if (equals == text.npos)
                break;
            std::u16string name = folded(text.substr(suffix, equals - suffix));
            if (std::ranges::find(note->declared, name) == note->declared.end())
                note->declared.push_back(std::move(name));
        }
    }

    const auto relative = [&](TextPos pos) { return TextPos{pos.line - chunk.first, pos.col}; };
    Matcher ends;
    TextPos from = endOfLine(chunk.end - 1);
    while (const auto end = findInChunk(u">", from, chunk.first)) {
        // A first chunk has nothing above it; what it lacks is missing for good.
        const Step here = step(*end, chunk.first);
        if (here.kind == Step::OutOfReach) {
            note->rest = relative(from);
            break;
        }
        if (here.kind == Step::Stop) {
            note->stops = true;
            break;
        }
        if (here.kind == Step::Tag) {
            if (here.raw.starts_with(u'/'))
                ends.push(here.raw.substr(1));
            else if (ends.meets(here.raw))
                note->starts.push_back({relative(here.tag), relative(*end), std::u16string(here.raw)});
        }
        from = here.next;
    }
    note->ends = std::move(ends.names());
    return note;
}

} // namespace tavrin
