#include "platform/schema/ElementTemplate.h"

#include <algorithm>
#include <cstddef>

namespace tavrin {

namespace {

/// Schemas can require without end; nobody reads more than this.
constexpr int maxDepth = 6;
constexpr std::size_t maxLength = 2000;

std::u16string prefixed(const std::u16string& prefix, const std::u16string& name) {
    return prefix.empty() ? name : prefix + u':' + name;
}

bool isWritable(std::u16string_view name) {
    return name.find_first_of(u"_*") == std::u16string_view::npos;
}

/// The template with `from` + ":" replaced in its tags; an empty prefix takes the colon with it.
std::u16string withPrefix(const std::u16string& text, std::u16string_view from, const std::u16string& to) {
    if (from.empty() || from == to)
        return text;
    const std::u16string written = to.empty() ? std::u16string() : to + u':';
    const std::u16string old = std::u16string(from) + u':';
    std::u16string result;
    for (std::size_t i = 0; i < text.size();) {
        const bool opens = text[i] == u'<';
        result += text[i++];
        if (!opens)
            continue;
        if (i < text.size() && text[i] == u'/')
            result += text[i++];
        if (text.compare(i, old.size(), old) == 0) {
            result += written;
            i += old.size();
        }
    }
    return result;
}

class TemplateWriter {
  public:
    TemplateWriter(const Vocabulary& vocabulary, const PrefixOf& elementPrefix,
                   const PrefixOf& attributePrefix)
        : vocabulary_(vocabulary), elementPrefix_(elementPrefix), attributePrefix_(attributePrefix) {}

    std::u16string write(int element) {
        writeAfterName(element, 0);
        if (!marked_)
            text_ += u'*';
        return std::move(text_);
    }

    [[nodiscard]] std::u16string nameOf(int element) const {
        const ExpandedName& name = vocabulary_.element(element).name;
        return prefixed(elementPrefix_(name.namespaceName), name.localName);
    }
    [[nodiscard]] bool canWrite(int element) const {
        const auto isUnwritable = [this](const AttributeUse& use) {
            return use.isRequired && !isWritable(nameOf(vocabulary_.attribute(use.attribute)));
        };
        return isWritable(nameOf(element)) &&
               std::ranges::none_of(vocabulary_.element(element).attributes, isUnwritable);
    }

  private:
    [[nodiscard]] std::u16string nameOf(const VocabularyAttribute& attribute) const {
        const ExpandedName& name = attribute.name;
        return name.namespaceName.empty() ? name.localName
                                          : prefixed(attributePrefix_(name.namespaceName), name.localName);
    }

    void mark() {
        if (!marked_)
            text_ += u'*';
        marked_ = true;
    }

    void newLine(int depth) {
        text_ += u'\n';
        text_.append(static_cast<std::size_t>(depth), u'_');
    }

    /// The rest of an element whose name has been written.
    void writeAfterName(int id, int depth) {
        const VocabularyElement& element = vocabulary_.element(id);
        for (const AttributeUse& use : element.attributes) {
            if (!use.isRequired)
                continue;
            // The space before the first attribute of the outermost element comes with the template's
            // insertion.
            if (!text_.empty())
                text_ += u' ';
            text_ += nameOf(vocabulary_.attribute(use.attribute)) + u"=\"";
            mark();
            text_ += u'"';
        }
        const bool isEmpty = element.content.root == ParticlePool::empty && !element.textAllowed;
        if (isEmpty) {
            text_ += u"/>";
            return;
        }
        text_ += u'>';
        const std::size_t before = text_.size();
        if (depth < maxDepth)
            writeRequired(element.content.root, depth + 1);
        if (text_.size() != before) {
            newLine(depth);
        } else if (element.textAllowed || depth > 0) {
            mark();
        } else { // only elements may follow: on a line of their own
            newLine(depth + 1);
            mark();
            newLine(depth);
        }
        text_ += u"</" + nameOf(id) + u'>';
    }

    /// The elements that a node requires. False when what follows cannot be told: after a choice.
    bool writeRequired(int node, int depth) {
        const Particle& particle = vocabulary_.particles().at(node);
        if (vocabulary_.particles().isOptional(node))
            return true;
        switch (particle.kind) {
        case ParticleKind::sequence:
        case ParticleKind::interleave:
            for (const int part : particle.parts)
                if (!writeRequired(part, depth))
                    return false;
            return particle.min == 1; // the parts are written once
        case ParticleKind::element:
            return writeChildren(particle, depth);
        case ParticleKind::nothing:
        case ParticleKind::empty:
        case ParticleKind::wildcard:
        case ParticleKind::choice:
            break;
        }
        return false;
    }

    bool writeChildren(const Particle& particle, int depth) {
        for (int i = 0; i < particle.min; ++i) {
            if (text_.size() > maxLength || !canWrite(particle.index))
                return false;
            newLine(depth);
            text_ += u'<' + nameOf(particle.index);
            writeAfterName(particle.index, depth);
        }
        return true;
    }

    const Vocabulary& vocabulary_;
    const PrefixOf& elementPrefix_;
    const PrefixOf& attributePrefix_;
    std::u16string text_;
    bool marked_ = false;
};

} // namespace

std::u16string elementTemplate(const Vocabulary& vocabulary, int element, const PrefixOf& elementPrefix,
                               const PrefixOf& attributePrefix) {
    const VocabularyElement& declared = vocabulary.element(element);
    TemplateWriter writer(vocabulary, elementPrefix, attributePrefix);
    if (!writer.canWrite(element))
        return u">*";
    if (!declared.writtenTemplate.empty())
        return withPrefix(declared.writtenTemplate, vocabulary.prefixOf(declared.name.namespaceName),
                          elementPrefix(declared.name.namespaceName));
    return writer.write(element);
}

} // namespace tavrin
