#include "replay/OptionsCommands.h"

#include "options/ColourPresets.h"
#include "platform/headless/HeadlessControls.h"

#include <algorithm>

namespace tavrin::replay {

namespace {

using Page = XmlEditorOptionsDlgPage;

HeadlessControls& controlsOf(Page& page) {
    return dynamic_cast<HeadlessControls&>(*page.controls());
}

Page& requireOpen(ReplaySession& session) {
    if (!session.options())
        throw BadLine("the options page is not open");
    return *session.options();
}

void chooseItem(Page& page, Arguments& arguments) {
    const std::u16string name = arguments.rest("the display item");
    if (!controlsOf(page).get<HeadlessListBox>(Page::displayItemList).choose(name))
        throw BadLine("no display item '" + json::toUtf8(name) + "'");
}

template <Page::ControlId box>
void chooseColour(Page& page, Arguments& arguments) {
    const int colour = arguments.integer("the colour", 0, static_cast<int>(settings::systemColour));
    arguments.finish();
    if (colour > 0xFFFFFF && colour != static_cast<int>(settings::systemColour))
        throw BadLine("a colour is at most 16777215, or 33554432 for the system's");
    controlsOf(page).get<HeadlessColourBox>(box).choose(static_cast<COLORREF>(colour));
}

void chooseFont(Page& page, Arguments& arguments) {
    const std::u16string name = arguments.rest("the font's name");
    controlsOf(page).get<HeadlessFontBox>(Page::fontListBox).choose(name);
}

void enterSize(Page& page, Arguments& arguments) {
    const std::u16string text = arguments.rest("the size");
    controlsOf(page).get<HeadlessEditBox>(Page::fontSizeBox).enter(text);
}

void markNumbers(Page& page, Arguments& arguments) {
    const bool on = arguments.onOrOff();
    arguments.finish();
    controlsOf(page).get<HeadlessCheckBox>(Page::lineNumbersBox).setChecked(on);
}

void chooseScheme(Page& page, Arguments& arguments) {
    const std::u16string name = arguments.rest("the scheme's name");
    const auto presets = colourPresets();
    const auto preset = std::ranges::find(presets, name, &ColourPreset::name);
    if (preset == presets.end())
        throw BadLine("no colour scheme '" + json::toUtf8(name) + "'");
    page.applyColours(*preset);
}

struct Action {
    std::string_view name;
    void (*run)(Page& page, Arguments& arguments);
};

constexpr Action actions[] = {
    {"item", chooseItem},
    {"fore", chooseColour<Page::foreColourBox>},
    {"back", chooseColour<Page::backColourBox>},
    {"font", chooseFont},
    {"size", enterSize},
    {"numbers", markNumbers},
    {"scheme", chooseScheme},
};

} // namespace

void runOptions(ReplaySession& session, Arguments& arguments) {
    const std::string_view name = arguments.word("what to do");
    if (name == "open") {
        arguments.finish();
        session.openOptions();
        return;
    }
    if (name == "save" || name == "cancel") {
        arguments.finish();
        if (name == "cancel" || requireOpen(session).confirm())
            session.closeOptions();
        return;
    }
    const auto* action = std::ranges::find(actions, name, &Action::name);
    if (action == std::end(actions))
        throw BadArguments("unknown action '" + std::string(name) + "'");
    action->run(requireOpen(session), arguments);
}

void printOptions(ReplaySession& session, json::Writer& out) {
    if (!session.options()) {
        out.null();
        return;
    }
    HeadlessControls& controls = controlsOf(*session.options());
    const auto& list = controls.get<HeadlessListBox>(Page::displayItemList);
    out.beginObject();
    out.key("font").value(controls.get<HeadlessFontBox>(Page::fontListBox).shown());
    out.key("size").value(controls.get<HeadlessEditBox>(Page::fontSizeBox).text());
    out.key("items").beginArray();
    for (int i = 0; i < list.GetCount(); ++i)
        out.value(list.GetText(i));
    out.endArray();
    out.key("item").value(list.GetText(list.GetCurSel()));
    const auto colour = [&](UINT box) {
        return static_cast<int>(controls.get<HeadlessColourBox>(box).getColor());
    };
    out.key("fore").value(colour(Page::foreColourBox));
    out.key("back").value(colour(Page::backColourBox));
    out.key("numbers").value(controls.get<HeadlessCheckBox>(Page::lineNumbersBox).isChecked());
    out.key("messages").beginArray();
    for (const std::u16string& message : controls.takeMessages())
        out.value(message);
    out.endArray().endObject();
}

void printPreview(ReplaySession& session, json::Writer& out) {
    if (!session.options()) {
        out.null();
        return;
    }
    const auto& panel = controlsOf(*session.options()).get<HeadlessTextPanel>(Page::previewPanel);
    out.beginObject();
    out.key("text").value(panel.text);
    out.key("font").value(panel.face);
    out.key("size").value(panel.size);
    out.key("fore").value(static_cast<int>(panel.fore));
    out.key("back").value(static_cast<int>(panel.back));
    out.endObject();
}

} // namespace tavrin::replay
