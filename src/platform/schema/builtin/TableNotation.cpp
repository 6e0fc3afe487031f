#include "platform/schema/builtin/TableNotation.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace tavrin::builtin {

namespace {

[[noreturn]] void fail(std::string_view what, std::string_view where) {
    throw std::logic_error(std::string(what) + " in \"" + std::string(where) + '"');
}

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == ':' || c == '.';
}

std::size_t nameEnd(std::string_view text, std::size_t from) {
    while (from < text.size() && isNameCharacter(text[from]))
        ++from;
    return from;
}

template <class Row>
const Row& rowNamed(std::string_view name, std::span<const Row> rows, std::string_view where) {
    const auto row = std::ranges::find(rows, name, &Row::name);
    if (row == rows.end())
        fail("unknown name \"" + std::string(name) + '"', where);
    return *row;
}

/// Reads one content model from left to right.
class ContentReader {
  public:
    ContentReader(std::string_view text, std::u16string_view namespaceName, VocabularyBuilder& builder)
        : text_(text), namespaceName_(namespaceName), builder_(builder) {}

    Content read() {
        const int node = readGroup();
        if (at_ < text_.size())
            fail("more than a content model", text_);
        return {node, textAllowed_};
    }

  private:
    char peek() {
        while (at_ < text_.size() && text_[at_] == ' ')
            ++at_;
        return at_ < text_.size() ? text_[at_] : '\0';
    }

    int readGroup() {
        std::vector<int> parts;
        char separator = '\0';
        for (;;) {
            readPart(parts);
            const char next = peek();
            if (next != ',' && next != '|')
                break;
            if (separator && separator != next)
                fail("both , and | in one group", text_);
            separator = next;
            ++at_;
        }
        const auto kind = separator == '|' ? ParticleKind::choice : ParticleKind::sequence;
        return builder_.particles().group(kind, std::move(parts));
    }

    void readPart(std::vector<int>& parts) {
        if (peek() == '#' && text_.substr(at_, 2) != "##") {
            if (readName(1) != "PCDATA")
                fail("unknown word after #", text_);
            textAllowed_ = true;
            return;
        }
        const int part = readParticle();
        switch (at_ < text_.size() ? text_[at_] : '\0') {
        case '?':
            ++at_;
            parts.push_back(builder_.particles().repeat(part, 0, 1));
            break;
        case '*':
            ++at_;
            parts.push_back(builder_.particles().repeat(part, 0, Particle::unbounded));
            break;
        case '+':
            ++at_;
            parts.push_back(builder_.particles().repeat(part, 1, Particle::unbounded));
            break;
        default:
            parts.push_back(part);
        }
    }

    int readParticle() {
        if (peek() == '(') {
            ++at_;
            const int group = readGroup();
            if (peek() != ')')
                fail("no )", text_);
            ++at_;
            return group;
        }
        if (peek() == '#')
            return readWildcard();
        return builder_.particles().element(
            builder_.reference({std::u16string(namespaceName_), widen(readName(0))}));
    }

    int readWildcard() {
        const std::string_view word = readName(2);
        if (word == "other")
            return builder_.particles().anyElement(
                {{std::u16string(), std::u16string(namespaceName_)}, true});
        if (word == "local")
            return builder_.particles().anyElement({{std::u16string()}, false});
        fail("unknown word after ##", text_);
    }

    /// The name after `skipped` characters.
    std::string_view readName(std::size_t skipped) {
        const std::size_t start = at_ + skipped;
        at_ = nameEnd(text_, start);
        if (at_ == start)
            fail("no name where one is needed", text_);
        return text_.substr(start, at_ - start);
    }

    std::string_view text_;
    std::u16string_view namespaceName_;
    VocabularyBuilder& builder_;
    std::size_t at_ = 0;
    bool textAllowed_ = false;
};

/// The entries of "a | <b> | c".
std::vector<std::string_view> entries(std::string_view values) {
    std::vector<std::string_view> result;
    while (!values.empty()) {
        const std::size_t bar = std::min(values.find(" | "), values.size());
        result.push_back(values.substr(0, bar));
        values.remove_prefix(std::min(bar + 3, values.size()));
    }
    return result;
}

bool isKind(std::string_view entry) {
    return entry.starts_with('<') && entry.ends_with('>');
}

void addOnce(std::vector<AttributeValue>& values, std::string_view text, bool isDescription) {
    std::u16string wide = widen(text);
    if (!wide.empty() && std::ranges::find(values, wide, &AttributeValue::text) == values.end())
        values.push_back({.text = std::move(wide), .isDescription = isDescription});
}

} // namespace

std::u16string widen(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

std::string expandGroups(std::string_view text, std::span<const GroupRow> groups) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] != '%') {
            result += text[at++];
            continue;
        }
        const std::size_t end = nameEnd(text, at + 1);
        const std::string_view name = text.substr(at + 1, end - at - 1);
        result += expandGroups(rowNamed(name, groups, text).members, groups);
        at = end;
    }
    return result;
}

Content readContent(std::string_view content, std::u16string_view namespaceName, VocabularyBuilder& builder) {
    if (content == "EMPTY")
        return {};
    return ContentReader(content, namespaceName, builder).read();
}

std::vector<AttributeMention> readAttributes(std::string_view list) {
    std::vector<AttributeMention> result;
    std::istringstream words{std::string(list)};
    for (std::string word; words >> word;) {
        const bool isRequired = word.ends_with('!');
        if (isRequired)
            word.pop_back();
        result.push_back({std::move(word), isRequired});
    }
    return result;
}

std::vector<std::string_view> kindsIn(std::string_view values) {
    std::vector<std::string_view> kinds;
    for (const std::string_view entry : entries(values))
        if (isKind(entry))
            kinds.push_back(entry.substr(1, entry.size() - 2));
    return kinds;
}

std::vector<AttributeValue> readValues(std::string_view values) {
    std::vector<AttributeValue> result;
    std::vector<std::string_view> descriptions;
    for (const std::string_view entry : entries(values)) {
        if (!isKind(entry)) {
            addOnce(result, entry, false);
            continue;
        }
        const KindRow& kind = rowNamed(entry.substr(1, entry.size() - 2), valueKinds, values);
        for (const std::string_view keyword : entries(kind.keywords))
            addOnce(result, keyword, false);
        descriptions.push_back(kind.description);
    }
    if (result.empty())
        return result;
    for (const std::string_view description : descriptions)
        addOnce(result, description, true);
    return result;
}

} // namespace tavrin::builtin
