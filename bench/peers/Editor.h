#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

namespace tavrin::bench {

/// An editor component under measurement. Each highlights XML, shows lines unwrapped in Liberation Mono of 10
/// points, and is asked to do the same work by the fastest of its public operations.
class Editor {
  public:
    Editor() = default;
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;
    virtual ~Editor() = default;

    /// What fills the window.
    [[nodiscard]] virtual QWidget& widget() = 0;
    /// What draws the text, and what takes the keys.
    [[nodiscard]] virtual QWidget& page() = 0;
    [[nodiscard]] virtual QWidget& keyboard() = 0;

    virtual void load(const QString& path) = 0;
    /// Makes the colours of every line known.
    virtual void colourAll() = 0;
    [[nodiscard]] virtual int lineCount() = 0;
    /// Places the caret and brings it into view; lines and columns count from 0.
    virtual void goTo(int line, int column) = 0;
    virtual void goToEnd() = 0;
    virtual void pageDown() = 0;
    /// Whether the text occurs, searched from the top.
    virtual bool find(const QString& text, bool matchCase) = 0;
    virtual void replaceAll(const QString& text, const QString& with) = 0;
    virtual void undo() = 0;
    /// Writes the text. False when the component only saves.
    virtual bool put(QIODevice& /*to*/) { return false; }
    /// Writes the text to a new file. False when the component only saves.
    virtual bool write(const QString& path);
    /// Writes the text in such a way that no moment has half a file.
    virtual void save(const QString& path);
    /// Types "<" and closes the list that appears. Milliseconds until the list was painted; nothing: the
    /// component has no list for XML.
    virtual std::optional<double> showCompletion() { return {}; }
};

using MakeEditor = std::function<std::unique_ptr<Editor>()>;

/// The main function of a runner: measures the rows that the command line asks for and prints them.
int runRows(int argc, char** argv, const QString& name, const QString& version, const MakeEditor& make);

/// Sends a key press and its release to a widget.
void pressKey(QWidget& widget, int key, Qt::KeyboardModifiers modifiers, const QString& text = {});

/// The font of all.
QFont editorFont();

} // namespace tavrin::bench
