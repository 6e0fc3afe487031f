#include "parsers/TagSurroundings.h"

#include "buffer/Buffer.h"
#include "platform/core/CharacterClass.h"
#include "platform/core/XmlNamespaces.h"

#include <algorithm>

namespace tavrin {

namespace {

constexpr int mostAncestors = 128;
constexpr std::size_t mostSiblings = 200;
constexpr int linesOfSiblings = 2000; ///< each way
constexpr int linesOfTag = 200;

using Bindings = std::vector<std::pair<std::u16string, std::u16string>>;

void bind(Bindings& bindings, std::u16string prefix, std::u16string namespaceName) {
    if (std::ranges::find(bindings, prefix, &Bindings::value_type::first) == bindings.end())
        bindings.emplace_back(std::move(prefix), std::move(namespaceName));
}

/// Reads forward, over a bounded number of lines.
class Scanner {
  public:
    Scanner(const Buffer& buffer, TextPos at, int lines)
        : buffer_(buffer), at_(at), end_(std::min(buffer.getLineCount(), at.line + lines)) {
        readLine();
    }

    [[nodiscard]] TextPos position() const { return at_; }
    [[nodiscard]] bool atEnd() const { return at_.line >= end_; }
    /// Whether reading stopped because the text did.
    [[nodiscard]] bool readAll() const { return atEnd() && end_ == buffer_.getLineCount(); }
    /// The character there; a line feed at the end of a line, 0 at the end.
    [[nodiscard]] char16_t peek() const {
        if (atEnd())
            return 0;
        const std::u16string_view rest = line();
        return rest.empty() ? u'\n' : rest.front();
    }
    char16_t next() {
        const char16_t c = peek();
        if (!atEnd())
            advance(1);
        return c;
    }
    [[nodiscard]] bool startsWith(std::u16string_view what) const {
        return !atEnd() && line().starts_with(what);
    }
    /// Goes to the next place where `what` stands on one line; to the end when there is none.
    bool find(std::u16string_view what) {
        for (; !atEnd(); nextLine()) {
            const std::size_t found = line().find(what);
            if (found != line().npos) {
                at_.col += static_cast<int>(found);
                return true;
            }
        }
        return false;
    }
    void findAfter(std::u16string_view what) {
        if (find(what))
            advance(static_cast<int>(what.size()));
    }
    void skipSpace() {
        while (isSpace(peek()))
            next();
    }
    /// Takes what is neither space nor one of `ends`.
    std::u16string takeUntil(std::u16string_view ends) {
        std::u16string taken;
        while (!atEnd() && !isSpace(peek()) && ends.find(peek()) == ends.npos)
            taken += next();
        return taken;
    }

  private:
    [[nodiscard]] std::u16string_view line() const { return text_.substr(static_cast<std::size_t>(at_.col)); }
    void readLine() { text_ = atEnd() ? std::u16string_view() : buffer_.getLineText(at_.line); }
    void nextLine() {
        at_ = {at_.line + 1, 0};
        readLine();
    }
    void advance(int columns) {
        at_.col += columns;
        if (at_.col > static_cast<int>(text_.size()))
            nextLine();
    }

    const Buffer& buffer_;
    TextPos at_;
    int end_;
    std::u16string_view text_; ///< of the line
};

struct StartTag {
    std::u16string name;
    Bindings declared;
    bool isEmptyElement = false;
};

void addDeclaration(StartTag& tag, const std::u16string& attribute, std::u16string value) {
    constexpr std::u16string_view prefixed = u"xmlns:";
    if (attribute == u"xmlns")
        bind(tag.declared, {}, std::move(value));
    else if (attribute.starts_with(prefixed))
        bind(tag.declared, attribute.substr(prefixed.size()), std::move(value));
}

/// Reads the tag whose "<" the scanner has just passed, up to and with its ">"; a "<" where none belongs ends
/// it too.
StartTag readStartTag(Scanner& scanner) {
    StartTag tag;
    tag.name = scanner.takeUntil(u"/><");
    while (!scanner.atEnd() && scanner.peek() != u'<') {
        scanner.skipSpace();
        const std::u16string attribute = scanner.takeUntil(u"=/><");
        scanner.skipSpace();
        if (scanner.peek() == u'=') {
            scanner.next();
            scanner.skipSpace();
            const char16_t quote = scanner.peek();
            if (quote != u'"' && quote != u'\'')
                continue;
            scanner.next();
            std::u16string value;
            while (!scanner.atEnd() && scanner.peek() != quote && scanner.peek() != u'<')
                value += scanner.next();
            if (scanner.peek() == quote)
                scanner.next();
            addDeclaration(tag, attribute, std::move(value));
        } else if (scanner.peek() == u'/') {
            scanner.next();
            tag.isEmptyElement = scanner.peek() == u'>';
        } else if (scanner.peek() == u'>') {
            scanner.next();
            return tag;
        }
    }
    return tag;
}

StartTag readStartTagAt(const Buffer& buffer, TextPos tag) {
    Scanner scanner(buffer, tag, linesOfTag);
    scanner.next();
    return readStartTag(scanner);
}

/// Passes what begins with "<" and is no element. False, and nothing is passed, when it is one.
bool skipOther(Scanner& scanner) {
    constexpr std::pair<std::u16string_view, std::u16string_view> others[] = {
        {u"<!--", u"-->"}, {u"<![", u"]]>"}, {u"<?", u"?>"}, {u"<!", u">"}};
    for (const auto& [start, end] : others)
        if (scanner.startsWith(start)) {
            scanner.findAfter(end);
            return true;
        }
    return false;
}

TagSurroundings::Name resolve(const StartTag& tag, const Bindings& bindings) {
    const std::size_t colon = tag.name.find(u':');
    const std::u16string prefix = colon == tag.name.npos ? std::u16string() : tag.name.substr(0, colon);
    const std::u16string local = colon == tag.name.npos ? tag.name : tag.name.substr(colon + 1);
    for (const Bindings* known : {&tag.declared, &bindings})
        for (const auto& [bound, namespaceName] : *known)
            if (bound == prefix)
                return {namespaceName, local};
    if (prefix == u"xsl")
        return {std::u16string(xsltNamespace), local};
    if (prefix == u"fo")
        return {std::u16string(xslFoNamespace), local};
    return {{}, local};
}

/// The first element of the text.
std::optional<StartTag> readRoot(const Buffer& buffer) {
    Scanner scanner(buffer, {0, 0}, linesOfTag);
    while (scanner.find(u"<")) {
        if (skipOther(scanner))
            continue;
        scanner.next();
        return readStartTag(scanner);
    }
    return std::nullopt;
}

void readSiblingsAfter(const Buffer& buffer, TextPos at, TagSurroundings& result) {
    Scanner scanner(buffer, at, linesOfSiblings);
    int depth = 0;
    const char16_t here = scanner.peek();
    if (here != 0 && here != u'<' && here != u'>' && here != u'/' && !isSpace(here))
        depth = readStartTag(scanner).isEmptyElement ? 0 : 1; // of an element that is there already
    while (scanner.find(u"<")) {
        if (skipOther(scanner))
            continue;
        const bool isEndTag = scanner.startsWith(u"</");
        if (isEndTag && depth == 0)
            return;
        if (isEndTag) {
            --depth;
            scanner.findAfter(u">");
            continue;
        }
        if (depth == 0 && result.siblingsAfter.size() == mostSiblings) {
            result.isAfterComplete = false;
            return;
        }
        scanner.next();
        const StartTag tag = readStartTag(scanner);
        if (depth == 0 && !tag.name.empty())
            result.siblingsAfter.push_back(resolve(tag, result.bindings));
        depth += tag.isEmptyElement ? 0 : 1;
    }
    result.isAfterComplete = scanner.readAll();
}

} // namespace

TagSurroundings readBindings(const Buffer& buffer, TextPos at) {
    TagSurroundings result;
    const auto take = [&](const StartTag& tag) {
        for (const auto& [prefix, namespaceName] : tag.declared)
            bind(result.bindings, prefix, namespaceName);
    };
    const TagWalk walk(buffer);
    const auto less = walk.findBefore(TagMark::Less, at);
    if (less && *less > walk.findBefore(TagMark::Greater, at).value_or(TextPos{-1, 0}))
        take(readStartTagAt(buffer, *less)); // the tag that is being typed
    int ancestors = 0;
    for (auto parent = walk.findParent(at); parent; parent = walk.findParent(parent->tag)) {
        take(readStartTagAt(buffer, parent->tag));
        if (++ancestors == mostAncestors) {
            if (const auto root = readRoot(buffer))
                take(*root);
            break;
        }
    }
    return result;
}

TagSurroundings readSurroundings(const Buffer& buffer, TextPos at) {
    TagSurroundings result = readBindings(buffer, at);
    std::vector<TextPos> tags;
    const int firstLine = std::max(0, at.line - linesOfSiblings);
    result.isBeforeComplete = TagWalk(buffer).findSiblingsBefore(at, firstLine, mostSiblings, tags);
    std::ranges::reverse(tags);
    for (const TextPos tag : tags)
        result.siblingsBefore.push_back(resolve(readStartTagAt(buffer, tag), result.bindings));
    readSiblingsAfter(buffer, at, result);
    return result;
}

} // namespace tavrin
