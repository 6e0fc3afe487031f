#pragma once

#include <span>
#include <string_view>

/// The forms in which the built-in vocabularies are written down.
///
/// Content is written as in a DTD: "title?, static-content*, flow", "(sort | with-param)*", "#PCDATA",
/// "EMPTY";
/// "%name" stands for a named group, "##other" for any one element of another namespace.
/// A list of attributes is separated by blanks: "name! select %space", where "!" marks what must be there and
/// "%name" stands for a named group. Values are separated by bars: "yes | no | <number>", where "<kind>" is a
/// kind of value; a kind may have keywords of its own. A fill-in is what follows the name of an element that
/// was accepted: "*" is where the caret goes, "_" is a tab, a line takes the indentation of the first
/// whatever its own is. Without one it is derived from what must be there.
namespace tavrin::builtin {

struct ElementRow {
    std::string_view name;
    std::string_view content;
    std::string_view attributes;
    std::string_view documentation;
    std::string_view fillIn = {};
};

struct AttributeRow {
    std::string_view name;
    std::string_view values;
    std::string_view documentation;
};

/// A group of content ("a | b") or of attributes ("a b").
struct GroupRow {
    std::string_view name;
    std::string_view members;
};

/// A kind of value: its keywords ("a | b"), and words for values that are not keywords; empty when there are
/// none.
struct KindRow {
    std::string_view name;
    std::string_view keywords;
    std::string_view description;
};

enum class Inherited : bool { No, Yes };

/// A property of formatting objects.
struct PropertyRow {
    std::string_view name;
    Inherited inherited;
    std::string_view values;
    std::string_view documentation;
};

/// A property that sets others, and is allowed wherever one of these is.
struct ShorthandRow {
    std::string_view name;
    std::string_view sets;
    std::string_view values;
    std::string_view documentation;
};

/// A part of a property whose values are of kind `kind`, written "property.component".
struct ComponentRow {
    std::string_view kind;
    std::string_view name;
    std::string_view values;
    std::string_view documentation;
};

extern const std::span<const KindRow> valueKinds;

} // namespace tavrin::builtin
