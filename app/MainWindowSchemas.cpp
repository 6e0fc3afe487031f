#include "MainWindow.h"
#include "SchemaService.h"
#include "SchemasDialog.h"
#include "control/SchemaDocument.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "platform/schema/SchemaLocation.h"
#include "platform/schema/SchemaSources.h"

#include <QLabel>

namespace tavrin::app {

void MainWindow::createSchemas() {
    const auto document = schemaDocument(editor_->control().getBuffer(),
                                         [this] { return pathOf(document_->path().toStdString()); });
    schemas_ = services_.schemas ? std::make_unique<DocumentSchemas>(document, services_.schemas->library())
                                 : std::make_unique<DocumentSchemas>(document, builtInVocabularies());
    schemas_->setOnChanged([this] { showSchemas(); });
    editor_->control().setSchemaSource(schemas_.get());
}

/// The schemas that the user has bound to the file that is shown now.
void MainWindow::recallBindings() {
    std::vector<AssociationInput::Bound> bound;
    if (services_.schemas && !document_->path().isEmpty()) {
        const auto& remembered = services_.schemas->library().preferences().bound;
        const auto found = remembered.find(pathOf(document_->path().toStdString()));
        if (found != remembered.end())
            for (const auto& schema : found->second)
                bound.push_back({schema, SchemaOrigin::user});
    }
    schemas_->setBound(std::move(bound));
    // What the document needs is read by the time that somebody types.
    schemas_->update();
    showSchemas();
}

void MainWindow::rememberBindings() {
    if (!services_.schemas || document_->path().isEmpty())
        return;
    SchemaPreferences preferences = services_.schemas->library().preferences();
    const auto path = pathOf(document_->path().toStdString());
    std::vector<std::filesystem::path> bound;
    for (const AssociationInput::Bound& schema : schemas_->bound())
        if (schema.by == SchemaOrigin::user)
            bound.push_back(schema.file);
    if (bound.empty())
        preferences.bound.erase(path);
    else
        preferences.bound[path] = std::move(bound);
    services_.schemas->setPreferences(std::move(preferences));
}

void MainWindow::showSchemas() {
    schemaState_->setText(schemas_->isReading() ? tr("Reading schemas…") : QString());
    schemaState_->setVisible(schemas_->isReading());
    if (schemasDialog_)
        schemasDialog_->refresh();
}

void MainWindow::showSchemasDialog() {
    if (!services_.schemas)
        return;
    schemasDialog_ =
        new SchemasDialog(*schemas_, *services_.schemas, services_.prompts, document_->displayName(), this);
    schemasDialog_->setAttribute(Qt::WA_DeleteOnClose);
    schemasDialog_->setWindowModality(Qt::WindowModal);
    connect(schemasDialog_, &SchemasDialog::bindingsChanged, this, &MainWindow::rememberBindings);
    schemasDialog_->show();
}

} // namespace tavrin::app
