// Loading, saving, painting and the journal with every allocation failing in turn.

#include "files/FileReplacement.h"
#include "files/TextFileContents.h"
#include "memory/MemorySession.h"
#include "recovery/Session.h"

#include <functional>
#include <iostream>
#include <memory>

namespace tavrin {
namespace {

using test::failing;
using Session = test::MemorySession;

/// What one run of a test needs.
struct Task {
    std::function<void()> run;
    /// What must hold afterwards; `isDone` when nothing failed.
    std::function<void(bool isDone)> check;
};

/// Runs a task, each time a new one, with each of its allocations failing.
void failEverywhere(const char* name, const std::function<Task()>& make) {
    long points = 0;
    for (const bool stays : {false, true}) {
        bool hasFailed = true;
        for (long point = 0; hasFailed && !testing::Test::HasFailure(); point = test::nextPoint(point)) {
            SCOPED_TRACE(testing::Message() << name << " " << point << (stays ? " for good" : ""));
            const Task task = make();
            hasFailed = failing(point, stays, task.run);
            task.check(!hasFailed);
            points += hasFailed ? 1 : 0;
        }
    }
    std::cout << name << ": " << points << " failures\n";
}

std::string utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    for (const char16_t c : text) {
        const char halves[] = {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
        bytes += bigEndian ? halves[1] : halves[0];
        bytes += bigEndian ? halves[0] : halves[1];
    }
    return bytes;
}

TEST(FileMemory, aLoadThatFailsLeavesTheOldText) {
    std::string lines;
    for (int i = 0; i < 700; ++i)
        lines += "<line/>\n";
    const std::u16string wide(lines.begin(), lines.end());
    const std::pair<const char*, std::string> texts[] = {
        {"UTF-8", lines},
        {"UTF-8, declared", "<?xml version='1.0' encoding='utf-8'?>" + lines},
        {"ISO-8859-1", "<?xml version='1.0' encoding='iso-8859-1'?>\xE4" + lines},
        {"windows-1251", "<?xml version='1.0' encoding='windows-1251'?>\xE4" + lines},
        {"invalid UTF-8", "\xFF\xE4" + lines},
        {"UTF-16", "\xFF\xFE" + utf16(wide, false)},
        {"UTF-16, big end first", "\xFE\xFF" + utf16(wide, true)},
    };
    const test::TemporaryFolder folder;
    for (const auto& [name, bytes] : texts) {
        const std::filesystem::path file = folder.path / "text.xml";
        test::put(file, bytes);
        Session loaded;
        ASSERT_TRUE(loaded.ctrl_->getBuffer().loadFile(file.u16string().c_str()));
        const std::u16string text = loaded.ctrl_->getText();
        const int encoding = loaded.ctrl_->getBuffer().getEncoding();
        failEverywhere(name, [&] {
            const auto session = std::make_shared<Session>();
            open(*session, test::shapes[0]);
            session->ctrl_->getBuffer().setEncoding(ENCODING_LATIN2);
            const auto before = session->state();
            const auto isLoaded = std::make_shared<bool>(false);
            return Task{
                [=, &file] { *isLoaded = session->ctrl_->getBuffer().loadFile(file.u16string().c_str()); },
                [=](bool isDone) {
                    const Buffer& buffer = session->ctrl_->getBuffer();
                    buffer.checkInvariants();
                    EXPECT_TRUE(*isLoaded || !isDone);
                    EXPECT_TRUE(session->ctrl_->getText() == (*isLoaded ? text : before.text));
                    EXPECT_EQ(buffer.getEncoding(), *isLoaded ? encoding : int{ENCODING_LATIN2});
                    EXPECT_TRUE(*isLoaded || session->state() == before);
                    static_cast<void>(session->colours());
                }};
        });
    }
}

TEST(FileMemory, aSaveThatFailsLeavesTheFileAndTheText) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.path / "text.xml";
    const FileReplacement replacement(folder.path / "backups");
    for (const bool hasHardLink : {false, true})
        failEverywhere(hasHardLink ? "save in place" : "save", [&] {
            std::filesystem::remove(file);
            test::put(file, "old");
            std::filesystem::remove(folder.path / "other.xml");
            if (hasHardLink)
                std::filesystem::create_hard_link(file, folder.path / "other.xml");
            const auto session = std::make_shared<Session>();
            open(*session, test::shapes[1]);
            session->type(u"new");
            const auto before = session->state();
            const auto isSaved = std::make_shared<bool>(false);
            return Task{[=, &replacement, &file] {
                            const Buffer& buffer = session->ctrl_->getBuffer();
                            *isSaved = !replacement.replace(file, textFileContents(buffer));
                        },
                        [=, &file](bool isDone) {
                            EXPECT_TRUE(session->state() == before);
                            EXPECT_TRUE(*isSaved || !isDone);
                            EXPECT_EQ(test::contentsOf(file).size() > 3, *isSaved);
                            EXPECT_FALSE(exists(file.parent_path() / ".text.xml.saving"));
                        }};
        });
    failEverywhere("text of the buffer and its file", [&] {
        const auto session = std::make_shared<Session>();
        open(*session, test::shapes[1]);
        const auto before = session->state();
        return Task{[=, &file] {
                        static_cast<void>(session->ctrl_->getBuffer().getString());
                        session->ctrl_->getBuffer().saveToFile(file.u16string().c_str());
                    },
                    [=](bool) { EXPECT_TRUE(session->state() == before); }};
    });
}

std::vector<std::u16string> drawn(const Session& session) {
    std::vector<std::u16string> texts;
    for (const DrawnText& text : session.paint())
        texts.push_back(text.text);
    return texts;
}

TEST(FileMemory, aPaintThatFailsIsRightTheNextTime) {
    for (const test::Shape& shape : test::shapes) {
        const auto start = [&] {
            auto session = std::make_shared<Session>();
            open(*session, shape);
            session->ctrl_->gotoLineCol(shape.lines - 3, 0); // lines that nobody has read
            return session;
        };
        const auto painted = start();
        const auto wanted = drawn(*painted);
        const auto colours = painted->colours();
        failEverywhere("paint", [&] {
            const auto session = start();
            const auto before = session->state();
            return Task{[=] { static_cast<void>(session->paint()); },
                        [=, &wanted, &colours](bool) {
                            EXPECT_TRUE(session->state() == before);
                            EXPECT_EQ(drawn(*session), wanted);
                            EXPECT_TRUE(session->colours() == colours);
                        }};
        });
    }
}

TEST(FileMemory, aJournalWithoutRoomIsFollowedByOneThatHasEverything) {
    const test::TemporaryFolder folder;
    const std::filesystem::path afterCrash = folder.path / "crash";
    failEverywhere("journal", [&] {
        const auto session = std::make_shared<test::Session>(folder.path / "journals");
        session->startNew(u"<a>\n</a>");
        const auto type = [=] {
            session->type(u"ab");
            session->paste(std::u16string(300, u'x'));
            session->key(VK_RETURN);
            session->key('Z', true);
            session->key('Y', true);
        };
        return Task{type, [=, &folder, &afterCrash](bool) {
                        session->type(u"last");
                        ASSERT_TRUE(session->journal.flush());
                        std::filesystem::remove_all(afterCrash);
                        std::filesystem::copy(folder.path / "journals", afterCrash);
                        auto found = findAbandonedJournals(afterCrash);
                        ASSERT_EQ(found.size(), 1U);
                        test::Session second(folder.path / "second");
                        const RecoveredSession recovered = recover(found[0], second.editor, second.editor);
                        EXPECT_FALSE(recovered.problem);
                        EXPECT_EQ(second.text(), session->text());
                        EXPECT_TRUE(second.editor.isModified());
                        session->journal.discard();
                    }};
    });
}

} // namespace
} // namespace tavrin
