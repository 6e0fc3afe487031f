#include "replay/CompletionQuestions.h"

#include "autocomplete/AutoCompleteList.h"
#include "autocomplete/IAutoCompleteListItemsCollection.h"
#include "parsers/XmlLangParser.h"
#include "replay/Interpreter.h"

#include <array>

namespace tavrin::replay {

namespace {

struct Position {
    int line;
    int col;
};

Position takePosition(ReplaySession& session, Arguments& arguments) {
    const int line = arguments.integer("the line");
    const int col = arguments.integer("the column");
    arguments.finish();
    requirePosition(session, line, col);
    return {line, col};
}

/// Null for a text without lines, which has no structure to ask for.
XmlLangParser* parserOf(ReplaySession& session) {
    if (session.buffer().getLineCount() == 0)
        return nullptr;
    return static_cast<XmlLangParser*>(session.buffer().getParser());
}

template <auto Query>
void printTruth(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    const Position at = takePosition(session, arguments);
    XmlLangParser* parser = parserOf(session);
    out.value(parser && (parser->*Query)(at.line, at.col));
}

} // namespace

void printPopup(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    arguments.finish();
    const HeadlessWindow* window = session.platform().popup();
    const auto* list = window ? dynamic_cast<const AutoCompleteList*>(&window->window()) : nullptr;
    if (!list) {
        out.null();
        return;
    }
    out.beginObject();
    out.key("items").beginArray();
    for (int i = 0; i < list->getItems().getCount(); ++i)
        out.value(list->getItems().getItemText(i));
    out.endArray();
    out.key("focused").value(list->GetFocusedItem());
    out.key("prefix").value(list->getPrefix());
    out.endObject();
}

void printParent(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    const Position at = takePosition(session, arguments);
    XmlLangParser* parser = parserOf(session);
    std::u16string local;
    std::u16string qualified;
    std::u16string namespaceName;
    bool topLevel = false;
    int tagLine = 0;
    int tagCol = 0;
    if (!parser ||
        !parser->findParentTag(at.line, at.col, local, qualified, namespaceName, topLevel, tagLine, tagCol)) {
        out.null();
        return;
    }
    out.beginObject();
    out.key("topLevel").value(topLevel);
    if (!topLevel) {
        out.key("local").value(local);
        out.key("qualified").value(qualified);
        out.key("namespace").value(namespaceName);
        out.key("tag").value(std::array{tagLine, tagCol});
    }
    out.endObject();
}

void printOpenTag(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    const Position at = takePosition(session, arguments);
    XmlLangParser* parser = parserOf(session);
    std::u16string local;
    std::u16string qualified;
    std::u16string raw;
    std::u16string namespaceName;
    if (!parser || !parser->findOpenTag(at.line, at.col, local, qualified, raw, namespaceName)) {
        out.null();
        return;
    }
    out.beginObject();
    out.key("local").value(local);
    out.key("qualified").value(qualified);
    out.key("raw").value(raw);
    out.key("namespace").value(namespaceName);
    out.endObject();
}

void printAttribute(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    const Position at = takePosition(session, arguments);
    XmlLangParser* parser = parserOf(session);
    XmlAttrEditInfo info;
    if (!parser || !parser->findAttribute(at.line, at.col, info)) {
        out.null();
        return;
    }
    out.beginObject();
    out.key("elementNamespace").value(info.elementNamespace);
    out.key("name").value(info.name);
    out.key("value").value(info.value);
    out.key("quote").value(std::u16string(1, info.quote));
    out.key("hasOpenQuote").value(info.hasOpenQuote);
    out.key("hasCloseQuote").value(info.hasCloseQuote);
    out.key("valueStart").value(info.valueStart);
    out.key("valueEnd").value(info.valueEnd);
    out.key("nameStart").value(info.nameStart);
    out.key("nameEnd").value(info.nameEnd);
    out.endObject();
}

void printIsTag(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    printTruth<&XmlLangParser::isTag>(session, arguments, out);
}

void printIsTagStart(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    printTruth<&XmlLangParser::isTagStart>(session, arguments, out);
}

void printIsAttribute(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    printTruth<&XmlLangParser::isAttribute>(session, arguments, out);
}

void printIsAttributeValue(ReplaySession& session, Arguments& arguments, json::Writer& out) {
    printTruth<&XmlLangParser::isAttributeValue>(session, arguments, out);
}

} // namespace tavrin::replay
