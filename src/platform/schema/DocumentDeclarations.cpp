#include "platform/schema/DocumentDeclarations.h"

#include "platform/core/XmlNamespaces.h"

#include <algorithm>
#include <cstddef>

namespace tavrin {

namespace {

using std::u16string;
using std::u16string_view;

constexpr auto none = u16string_view::npos;

bool isBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

bool isNameCharacter(char16_t c) {
    return c >= 0x80 || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'_' || c == u':' || c == u'-' || c == u'.';
}

bool isNameStart(char16_t c) {
    return isNameCharacter(c) && !(c >= u'0' && c <= u'9') && c != u'-' && c != u'.';
}

/// The character that "&name;" stands for; 0 for an entity that only a DTD can tell.
char32_t referred(u16string_view name) {
    if (name == u"amp")
        return U'&';
    if (name == u"lt")
        return U'<';
    if (name == u"gt")
        return U'>';
    if (name == u"quot")
        return U'"';
    if (name == u"apos")
        return U'\'';
    if (!name.starts_with(u'#'))
        return 0;
    const bool isHex = name.starts_with(u"#x");
    char32_t value = 0;
    for (const char16_t c : name.substr(isHex ? 2 : 1)) {
        const char32_t lower = c | 0x20U;
        const bool isDigit = c >= u'0' && c <= u'9';
        if (!isDigit && !(isHex && lower >= U'a' && lower <= U'f'))
            return 0;
        value = value * (isHex ? 16 : 10) + (isDigit ? c - U'0' : lower - U'a' + 10);
        if (value > 0xFFFF)
            return 0; // no URI needs one written so
    }
    return value;
}

/// An attribute's value with its references replaced and blanks made spaces.
u16string valueOf(u16string_view written) {
    u16string result;
    for (std::size_t i = 0; i < written.size(); ++i) {
        const std::size_t end = written[i] == u'&' ? written.find(u';', i) : none;
        const char32_t character = end == none ? 0 : referred(written.substr(i + 1, end - i - 1));
        if (character) {
            result += static_cast<char16_t>(character);
            i = end;
        } else {
            result += isBlank(written[i]) ? u' ' : written[i];
        }
    }
    return result;
}

std::vector<u16string> wordsOf(u16string_view text) {
    std::vector<u16string> words;
    for (std::size_t i = 0; i < text.size();) {
        if (isBlank(text[i])) {
            ++i;
            continue;
        }
        const auto end = std::ranges::find_if(text.substr(i), isBlank) - text.begin();
        words.emplace_back(text.substr(i, end - i));
        i = end;
    }
    return words;
}

using Attributes = std::vector<std::pair<u16string, u16string>>;

u16string find(const Attributes& attributes, u16string_view name) {
    const auto found = std::ranges::find(attributes, name, &Attributes::value_type::first);
    return found == attributes.end() ? u16string() : found->second;
}

class Reader {
  public:
    explicit Reader(u16string_view text) : text_(text) {}

    DocumentDeclarations read() {
        while (!result_.root) {
            at_ = text_.find(u'<', at_);
            if (at_ == none)
                break;
            ++at_;
            if (takes(u"!--"))
                skipTo(u"-->");
            else if (takes(u"?"))
                readInstruction();
            else if (takes(u"!DOCTYPE"))
                readDocumentType();
            else if (at_ < text_.size() && isNameStart(text_[at_]))
                readRoot();
        }
        return std::move(result_);
    }

  private:
    [[nodiscard]] bool atEnd() const { return at_ >= text_.size(); }
    [[nodiscard]] char16_t here() const { return atEnd() ? u'\0' : text_[at_]; }

    bool takes(u16string_view start) {
        if (!text_.substr(at_).starts_with(start))
            return false;
        at_ += start.size();
        return true;
    }

    /// Behind the next `end`, or at the text's end.
    u16string_view skipTo(u16string_view end) {
        const std::size_t from = at_;
        const std::size_t found = text_.find(end, at_);
        at_ = found == none ? text_.size() : found + end.size();
        return text_.substr(from, found == none ? none : found - from);
    }

    void skipBlanks() {
        while (!atEnd() && isBlank(text_[at_]))
            ++at_;
    }

    u16string_view name() {
        const std::size_t from = at_;
        while (!atEnd() && isNameCharacter(text_[at_]))
            ++at_;
        return text_.substr(from, at_ - from);
    }

    /// A quoted text, if one stands here.
    std::optional<u16string_view> literal() {
        skipBlanks();
        if (here() != u'"' && here() != u'\'')
            return std::nullopt;
        const std::size_t end = text_.find(text_[at_], at_ + 1);
        if (end == none)
            return std::nullopt;
        const u16string_view content = text_.substr(at_ + 1, end - at_ - 1);
        at_ = end + 1;
        return content;
    }

    /// name="value" pairs up to what is none.
    Attributes attributes() {
        Attributes result;
        for (;;) {
            skipBlanks();
            const u16string_view attribute = name();
            if (attribute.empty())
                return result;
            skipBlanks();
            if (!takes(u"="))
                continue; // still being typed
            if (const auto value = literal())
                result.emplace_back(attribute, valueOf(*value));
        }
    }

    void readInstruction() {
        if (name() == u"xml-model") {
            const Attributes given = attributes();
            result_.models.push_back(
                {find(given, u"href"), find(given, u"type"), find(given, u"schematypens")});
        }
        skipTo(u"?>");
    }

    void readDocumentType() {
        const std::size_t start = at_ - u16string_view(u"<!DOCTYPE").size();
        skipBlanks();
        DocumentDeclarations::DocumentType type{.rootName = u16string(name())};
        skipBlanks();
        const bool isPublic = takes(u"PUBLIC");
        if (isPublic)
            if (const auto id = literal())
                for (const u16string& word : wordsOf(*id))
                    type.publicId += (type.publicId.empty() ? u"" : u" ") + word;
        if (isPublic || takes(u"SYSTEM"))
            if (const auto id = literal())
                type.systemId = *id;
        skipBlanks();
        if (takes(u"[")) {
            const std::size_t from = at_;
            if (!skipSubset())
                return; // without an end there is no telling what belongs to it
            type.internalSubset = text_.substr(from, at_ - 1 - from);
        }
        skipBlanks();
        if (takes(u">"))
            type.declaration = text_.substr(start, at_ - start);
        result_.documentType = std::move(type);
    }

    /// Behind the "]" of the internal subset.
    bool skipSubset() {
        while (!atEnd()) {
            if (here() == u'"' || here() == u'\'') {
                if (!literal())
                    return false;
            } else if (takes(u"<!--")) {
                skipTo(u"-->");
            } else if (takes(u"<?")) {
                skipTo(u"?>");
            } else if (text_[at_++] == u']') {
                return true;
            }
        }
        return false;
    }

    void readRoot() {
        const u16string_view qualified = name();
        const Attributes given = attributes();
        result_.isComplete = here() == u'>' || here() == u'/' || here() == u'<';
        for (const auto& [attribute, value] : given) {
            if (attribute == u"xmlns")
                result_.bindings.emplace_back(u"", value);
            else if (attribute.starts_with(u"xmlns:"))
                result_.bindings.emplace_back(attribute.substr(6), value);
        }
        const std::size_t colon = qualified.find(u':');
        result_.root = ExpandedName{namespaceOf(colon == none ? u"" : qualified.substr(0, colon)),
                                    u16string(qualified.substr(colon == none ? 0 : colon + 1))};
        for (const auto& [attribute, value] : given)
            noteLocation(attribute, value);
    }

    [[nodiscard]] u16string namespaceOf(u16string_view prefix) const {
        for (const auto& [bound, namespaceName] : result_.bindings)
            if (bound == prefix)
                return namespaceName;
        if (prefix == u"xsl")
            return u16string(xsltNamespace);
        if (prefix == u"fo")
            return u16string(xslFoNamespace);
        return prefix == u"xsi" ? u16string(schemaInstanceNamespace) : u16string();
    }

    void noteLocation(u16string_view attribute, const u16string& value) {
        const std::size_t colon = attribute.find(u':');
        if (colon == none || namespaceOf(attribute.substr(0, colon)) != schemaInstanceNamespace)
            return;
        const u16string_view local = attribute.substr(colon + 1);
        const std::vector<u16string> words = wordsOf(value);
        if (local == u"noNamespaceSchemaLocation" && !words.empty())
            result_.noNamespaceSchemaLocation = words.front();
        if (local == u"schemaLocation")
            for (std::size_t i = 0; i + 1 < words.size(); i += 2)
                result_.schemaLocations.emplace_back(words[i], words[i + 1]);
    }

    u16string_view text_;
    std::size_t at_ = 0;
    DocumentDeclarations result_;
};

} // namespace

DocumentDeclarations readDeclarations(u16string_view beginning) {
    return Reader(beginning).read();
}

} // namespace tavrin
