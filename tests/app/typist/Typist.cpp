// The program as it runs for a user, and a user who types until it is killed.
// Usage: tavrin_typist FOLDER SEED: opens FOLDER/a.xml, keeps its state in FOLDER/state, and tells in
// FOLDER/diary, a file of the size of a TypingDiary, what it has done.

#include "app/DialogPrompts.h"
#include "app/SchemaService.h"
#include "app/TypingScript.h"
#include "platform/qt/QtPlatform.h"

#include <QSettings>
#include <QTimer>

#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

using namespace tavrin;
using namespace tavrin::app;

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (argc != 3)
        return 2;
    const std::string folder = argv[1];
    const int file = ::open((folder + "/diary").c_str(), O_RDWR | O_CLOEXEC);
    void* const memory = ::mmap(nullptr, sizeof(TypingDiary), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED)
        return 2;
    auto& diary = *static_cast<TypingDiary*>(memory);

    qt::QtPlatform platform(QString::fromStdString(folder + "/settings.ini"));
    QSettings settings(QString::fromStdString(folder + "/window.ini"), QSettings::IniFormat);
    DialogPrompts prompts;
    SchemaService schemas(platform.settings());
    auto* window = new MainWindow({platform, settings, prompts, &schemas, folder + "/state/journals",
                                   folder + "/state/backups", folder + "/state/open"});
    window->show();
    window->openFile(QString::fromStdString(folder + "/a.xml"));
    TypingScript script(static_cast<unsigned>(std::atoi(argv[2])));
    const std::function<void()> type = [&] {
        const int number = diary.count;
        if (number == TypingDiary::mostCommands)
            return;
        script.next(*window);
        diary.done[number] = std::chrono::steady_clock::now();
        diary.count = number + 1;
        QTimer::singleShot(number % 4, window, type);
    };
    QTimer::singleShot(0, window, type);
    return QApplication::exec();
}
