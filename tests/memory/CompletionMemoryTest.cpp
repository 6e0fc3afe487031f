// Completion with every allocation failing in turn: what was typed is there or not, a list is absent or
// right, and the next time everything works.

#include "autocomplete/AutoCompleteList.h"
#include "autocomplete/XmlAutoCompleteProvider.h"
#include "control/SchemaDocument.h"
#include "memory/MemorySession.h"

#include <iostream>
#include <optional>

namespace tavrin {
namespace {

using List = std::vector<std::u16string>;

constexpr std::u16string_view document = u"<xsl:stylesheet version='1.0'\n"
                                         u" xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>\n"
                                         u"<xsl:template match='/'>\n"
                                         u"<xsl:number level/>\n"
                                         u"\n"
                                         u"<p\n"
                                         u"</xsl:template>\n"
                                         u"</xsl:stylesheet>";

struct Completion {
    const char* name;
    int line;
    int col;
    char16_t typed;        ///< 0: Ctrl+Space
    std::u16string inList; ///< typed while a list is up, '\b' is Backspace; then comes Return
    std::u16string result; ///< the line
};

const Completion completions[] = {
    {"element", 4, 0, u'<', u"xsl:cho", u"<xsl:choose>"},
    {"attribute", 2, 13, u' ', u"mo", u"<xsl:template mode match='/'>"},
    {"value", 3, 17, u'=', u"mu", u"<xsl:number level=\"multiple\"/>"},
    {"end tag", 5, 2, u'>', {}, u"<p></p>"},
    {"name that stands there", 2, 19, 0, u"\b\b\b\b\bmo", u"<xsl:template mode='/'>"},
};

/// An editor that knows XSLT, and somebody who uses its lists.
class CompletingSession : public test::MemorySession {
  public:
    CompletingSession(const Completion& how, const List* wanted) : how_(how), wanted_(wanted) {
        ctrl_->setAutoCompleteProvider(&provider_);
        ctrl_->setSchemaSource(schemas_.get());
        platform_.setPopupUser([this] { return useList(); });
        setText(document);
    }

    void run() {
        select(how_.line, how_.col, how_.line, how_.col);
        done_ = 0;
        if (how_.typed == 0)
            ctrl_->OnAutocompleteListmembers();
        else
            platform_.typeCharacter(*ctrl_, how_.typed);
    }
    void undoAll() {
        while (ctrl_->CanUndo())
            ctrl_->SendCommand(ID_EDIT_UNDO);
    }
    [[nodiscard]] bool isListUp() const { return platform_.popup() != nullptr; }
    [[nodiscard]] bool sawWrongList() const { return sawWrongList_; }
    [[nodiscard]] std::u16string line() const {
        return std::u16string(ctrl_->getBuffer().getLineText(how_.line));
    }

    List seen; ///< with nothing to compare it with

  private:
    /// Allocates nothing of its own when there is a list to compare with.
    bool useList() {
        const auto& list = dynamic_cast<AutoCompleteList&>(platform_.popup()->window());
        if (done_ == 0 && !wanted_)
            for (int i = 0; i < list.GetItemCount(); ++i)
                seen.push_back(list.GetItemText(i));
        else if (done_ == 0)
            compare(list);
        const std::u16string_view line = ctrl_->getBuffer().getLineText(how_.line);
        const auto caret = static_cast<std::size_t>(ctrl_->getCurrentColoumn());
        sawWrongList_ = sawWrongList_ || !line.substr(0, caret).ends_with(list.getPrefix());
        if (done_ > how_.inList.size())
            return false;
        const char16_t input = done_ == how_.inList.size() ? u'\r' : how_.inList[done_];
        ++done_;
        if (input == u'\r' || input == u'\b')
            key(input == u'\r' ? VK_RETURN : VK_BACK);
        else
            platform_.typeCharacter(*ctrl_, input);
        return true;
    }
    void compare(const AutoCompleteList& list) {
        sawWrongList_ = sawWrongList_ || list.GetItemCount() != std::ssize(*wanted_);
        for (int i = 0; !sawWrongList_ && i < list.GetItemCount(); ++i)
            sawWrongList_ = list.GetItemText(i) != (*wanted_)[static_cast<std::size_t>(i)];
    }

    const Completion& how_;
    const List* wanted_;
    XmlAutoCompleteProvider provider_;
    std::unique_ptr<ISchemaSource> schemas_ = builtInSchemas(ctrl_->getBuffer());
    std::size_t done_ = 0;
    bool sawWrongList_ = false;
};

class CompletionMemory : public testing::TestWithParam<Completion> {};

TEST_P(CompletionMemory, isThereOrNotAndWorksTheNextTime) {
    CompletingSession untroubled(GetParam(), nullptr);
    const auto before = untroubled.state();
    untroubled.run();
    const auto after = untroubled.state();
    EXPECT_EQ(untroubled.line(), GetParam().result);
    const auto isRight = [&](CompletingSession& session) {
        EXPECT_NO_THROW(session.checkInvariants());
        EXPECT_FALSE(session.isListUp());
        EXPECT_FALSE(session.sawWrongList());
        EXPECT_FALSE(XSchema::get());
    };
    long points = 0;
    for (const bool stays : {false, true}) {
        bool hasFailed = true;
        for (long point = 0; hasFailed && !HasFailure(); point = test::nextPoint(point, 60)) {
            SCOPED_TRACE(testing::Message() << point << (stays ? " for good" : ""));
            CompletingSession session(GetParam(), &untroubled.seen);
            hasFailed = test::failing(point, stays, [&] { session.run(); });
            isRight(session);
            session.undoAll();
            EXPECT_EQ(session.state().text, before.text);
            EXPECT_FALSE(session.state().isModified);
            session.run();
            isRight(session);
            EXPECT_TRUE(session.state() == after) << testing::PrintToString(session.line());
            points += hasFailed ? 1 : 0;
        }
    }
    EXPECT_GT(points, 0);
    std::cout << GetParam().name << ": " << points << " failures\n";
}

INSTANTIATE_TEST_SUITE_P(Every, CompletionMemory, testing::ValuesIn(completions), [](const auto& tested) {
    std::string name = tested.param.name;
    std::ranges::replace(name, ' ', '_');
    return name;
});

} // namespace
} // namespace tavrin
