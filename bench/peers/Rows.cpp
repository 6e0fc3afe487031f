// The rows of the comparison, the same code for every editor. A runner is started anew for each group of
// rows:
//   --group load   reads the file, colours it, and looks at the memory
//   --group work   reads the file, then paints, types, moves, searches, saves and replaces
//   --group quiet  reads the file, waits as a user does who reads, then moves and completes
// It prints tab-separated records as it goes, so that those before a time limit count:
//   begin  EDITOR SIZE SHAPE ROW            the row is being measured
//   result EDITOR SIZE SHAPE ROW VALUE
//   version EDITOR TEXT

#include "Editor.h"
#include "Samples.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

/// Saving is measured without waiting for the disk: these stand before those of the C library.
extern "C" int fsync(int) {
    return 0;
}
extern "C" int fdatasync(int) {
    return 0;
}

namespace tavrin::bench {

namespace {

constexpr QSize windowSize{1600, 1000};
constexpr int pagesPainted = 100;
constexpr int pagesTurned = 50;
constexpr int linesTyped = 4;
constexpr int keysALine = 50;
constexpr int linesBroken = 50;
constexpr int jumps = 10;
constexpr int placesTried = 50;
constexpr int saves = 20;
constexpr int linesBelow = 20;
constexpr int quietTime = 5000; ///< ms
/// Slow editors give fewer samples: a row ends after so many milliseconds.
constexpr double rowBudget = 10000;

const QString replaced = QStringLiteral("currency");
const QString replacement = QStringLiteral("unit of account");

[[noreturn]] void fail(const std::string& why) {
    std::fprintf(stderr, "%s\n", why.c_str());
    std::exit(1);
}

/// A field of /proc/self/status, in MiB.
double memory(const std::string& field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        fail("cannot read /proc/self/status");
    std::istringstream lines(status.readAll().toStdString());
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(field + ":"))
            return std::stod(line.substr(field.size() + 1)) / 1024;
    fail("no " + field);
}

class PaintCounter final : public QObject {
  public:
    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int paints = 0;
};

class Runner {
  public:
    Runner(Editor& editor, QString prefix, QString file, const QString& wanted)
        : editor_(editor), prefix_(std::move(prefix)), file_(std::move(file)), wanted_(wanted) {
        window_.setLayout(new QVBoxLayout);
        window_.layout()->setContentsMargins(0, 0, 0, 0);
        window_.layout()->addWidget(&editor_.widget());
        window_.resize(windowSize);
        window_.show();
        window_.activateWindow();
        editor_.keyboard().setFocus();
        editor_.page().installEventFilter(&counter_);
        paint();
    }

    void load() {
        const double before = memory("VmRSS");
        begin("load");
        const double time = timed([this] { editor_.load(file_); });
        result("load", time);
        result("memory.loaded", memory("VmRSS") - before);
        before_ = before;
    }

    void colour() {
        if (!wants("colour") && !wants("memory"))
            return;
        begin("colour.all");
        const double time = milliseconds([this] { editor_.colourAll(); });
        result("colour.all", megabytes() / time * 1000);
        result("memory.coloured", memory("VmRSS") - before_);
        result("memory.peak", memory("VmHWM") - before_);
    }

    void quiet() {
        if (!wants("end.quiet") && !wants("completion.quiet"))
            return;
        QEventLoop waiting;
        QTimer::singleShot(quietTime, &waiting, &QEventLoop::quit);
        waiting.exec();
        result("memory.quiet", memory("VmRSS") - before_);
        firstEnd("end.quiet");
        if (!wants("completion.quiet"))
            return;
        moveTo(editor_.lineCount() / 2, 0);
        if (const std::optional<double> time = editor_.showCompletion())
            result("completion.quiet", *time);
    }

    void work() {
        firstEnd("end.first");
        const int lines = editor_.lineCount();
        page(lines / 2);
        typing("top", 2);
        typing("middle", lines / 2);
        typing("end", lines - linesTyped - 2);
        breaking("top", 2);
        breaking("middle", lines / 2);
        pageDown(lines / 3);
        endAfterEdit();
        finding("find.case", true);
        finding("find.nocase", false);
        completion(lines / 3); // where nobody typed
        saving();
        replacing();
    }

  private:
    [[nodiscard]] double megabytes() const { return static_cast<double>(QFileInfo(file_).size()) / 1e6; }
    [[nodiscard]] bool wants(const char* row) const {
        return wanted_.match(QString::fromLatin1(row)).hasMatch();
    }
    void say(const char* kind, const std::string& rest) {
        std::printf("%s\t%s\t%s\n", kind, prefix_.toUtf8().constData(), rest.c_str());
        std::fflush(stdout);
    }
    void begin(const std::string& row) { say("begin", row); }
    void result(const std::string& row, double value) {
        if (wants(row.c_str()))
            say("result", row + "\t" + std::to_string(value));
    }

    /// Handles what is posted and paints what is to be painted.
    void paint() {
        QCoreApplication::processEvents();
        QEvent update(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(&window_, &update);
    }
    /// An action with its paint; one that paints nothing is a mistake of the runner.
    template <class Action>
    double timed(Action&& action) {
        counter_.paints = 0;
        const double time = milliseconds([&] {
            action();
            paint();
        });
        if (counter_.paints == 0)
            fail("nothing was painted");
        return time;
    }

    /// The median of `count` samples, or of as many as there is time for.
    template <class Sample>
    std::vector<double> samples(int count, Sample&& sample) {
        std::vector<double> values;
        double total = 0;
        for (int i = 0; i < count && (i < 3 || total < rowBudget); ++i)
            total += values.emplace_back(sample(i));
        return values;
    }

    /// Moves to a line and leaves it in the middle of the page, where the text reaches that far.
    void moveTo(int line, int column) {
        editor_.goTo(std::min(line + linesBelow, editor_.lineCount() - 1), 0);
        editor_.goTo(line, column);
        paint();
    }

    void firstEnd(const char* row) {
        if (!wants(row))
            return;
        begin(row);
        result(row, timed([this] { editor_.goToEnd(); }));
    }

    void page(int line) {
        if (!wants("page.paint"))
            return;
        moveTo(line, 0);
        begin("page.paint");
        result("page.paint", median(samples(pagesPainted, [this](int) {
                   return milliseconds([this] { editor_.page().repaint(); });
               })));
    }

    void typing(const std::string& where, int firstLine) {
        const std::string row = "type." + where;
        if (!wants(row.c_str()))
            return;
        begin(row);
        const std::vector<double> times = samples(linesTyped * keysALine, [&](int i) {
            if (i % keysALine == 0)
                moveTo(std::max(0, firstLine + i / keysALine), 8);
            return timed([this] { pressKey(editor_.keyboard(), Qt::Key_X, Qt::NoModifier, "x"); });
        });
        result(row, median(times));
        result(row + ".longest", *std::ranges::max_element(times));
    }

    void breaking(const std::string& where, int line) {
        const std::string row = "return." + where;
        if (!wants(row.c_str()))
            return;
        moveTo(line, 8);
        begin(row);
        result(row, median(samples(linesBroken, [this](int) {
                   return timed(
                       [this] { pressKey(editor_.keyboard(), Qt::Key_Return, Qt::NoModifier, "\r"); });
               })));
    }

    void pageDown(int line) {
        if (!wants("page.down"))
            return;
        moveTo(line, 0);
        begin("page.down");
        result("page.down",
               median(samples(pagesTurned, [this](int) { return timed([this] { editor_.pageDown(); }); })));
    }

    void endAfterEdit() {
        if (!wants("end.edited"))
            return;
        begin("end.edited");
        result("end.edited", median(samples(jumps, [this](int) {
                   moveTo(2, 8);
                   pressKey(editor_.keyboard(), Qt::Key_X, Qt::NoModifier, "x");
                   paint();
                   return timed([this] { editor_.goToEnd(); });
               })));
    }

    void finding(const char* row, bool matchCase) {
        if (!wants(row))
            return;
        begin(row);
        const auto absent = QStringLiteral("no such text");
        const double time = median(samples(5, [&](int) {
            return milliseconds([&] {
                if (editor_.find(absent, matchCase))
                    fail("found what is not there");
            });
        }));
        result(row, megabytes() / time * 1000);
    }

    void completion(int line) {
        if (!wants("completion"))
            return;
        std::vector<double> times;
        for (int i = 0; i < placesTried && std::ssize(times) < jumps; ++i) {
            moveTo(line + i, 0);
            if (const std::optional<double> time = editor_.showCompletion()) // not every place takes a tag
                times.push_back(*time);
        }
        if (times.size() < 2)
            return;
        result("completion.first", times.front());
        times.erase(times.begin());
        result("completion.later", median(times));
    }

    void saving() {
        if (!wants("save"))
            return;
        const QString target = file_ + ".saved";
        const auto measure = [&](const char* row, auto&& put) {
            begin(row);
            bool isPut = true;
            const double time = median(samples(saves, [&](int) {
                const double sample = milliseconds([&] { isPut = put(); });
                if (isPut && QFileInfo(target).size() < QFileInfo(file_).size())
                    fail("the saved file is too short");
                QFile::remove(target);
                return sample;
            }));
            if (isPut)
                result(row, time);
        };
        measure("save.write", [&] { return editor_.write(target); });
        measure("save", [&] {
            editor_.save(target);
            return true;
        });
    }

    void replacing() {
        if (!wants("replace"))
            return;
        begin("replace.all");
        result("replace.all", timed([this] { editor_.replaceAll(replaced, replacement); }));
        if (editor_.find(replaced, true) || !editor_.find(replacement, true))
            fail("the text was not replaced");
        begin("replace.undo");
        result("replace.undo", timed([this] { editor_.undo(); }));
        if (!editor_.find(replaced, true) || editor_.find(replacement, true))
            fail("the replacement was not undone");
    }

    Editor& editor_;
    QString prefix_;
    QString file_;
    QRegularExpression wanted_;
    QWidget window_;
    PaintCounter counter_;
    double before_ = 0;
};

} // namespace

bool Editor::write(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && put(file);
}

void Editor::save(const QString& path) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !put(file) || !file.commit())
        fail("the text could not be saved");
}

void pressKey(QWidget& widget, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(&widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QCoreApplication::sendEvent(&widget, &release);
}

QFont editorFont() {
    QFont font(QStringLiteral("Liberation Mono"), 10);
    font.setStyleHint(QFont::Monospace);
    return font;
}

int runRows(int argc, char** argv, const QString& name, const QString& version, const MakeEditor& make) {
    QApplication application(argc, argv);
    QCommandLineParser arguments;
    arguments.addOptions({{"file", "", "path"},
                          {"size", "", "MB"},
                          {"shape", "", "name", "lines"},
                          {"group", "", "load|work|quiet"},
                          {"rows", "", "pattern", "."}});
    arguments.process(application);
    const QString file = arguments.value("file");
    if (!QFileInfo::exists(file))
        fail("no file " + file.toStdString());

    std::printf("version\t%s\t%s\n", name.toUtf8().constData(), version.toUtf8().constData());
    const std::unique_ptr<Editor> editor = make();
    Runner runner(*editor, name + "\t" + arguments.value("size") + "\t" + arguments.value("shape"), file,
                  arguments.value("rows"));
    runner.load();
    const QString group = arguments.value("group");
    if (group == "load")
        runner.colour();
    else if (group == "quiet")
        runner.quiet();
    else
        runner.work();
    std::fflush(stdout);
    std::_Exit(0); // taking a large document apart is no row
}

} // namespace tavrin::bench
