#include "SchemasDialog.h"

#include "Prompts.h"
#include "SchemaRuleDialog.h"
#include "SchemaService.h"
#include "platform/schema/DocumentSchemas.h"
#include "platform/schema/SchemaLocation.h"
#include "platform/schema/SchemaText.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tavrin::app {

namespace {

constexpr int candidateRole = Qt::UserRole;

QString shown(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString shownNamespace(std::u16string_view name) {
    return name.empty() ? SchemasDialog::tr("(no namespace)")
                        : QString::fromUtf16(name.data(), static_cast<qsizetype>(name.size()));
}

QString namespacesOf(const SchemaDecision& decision) {
    QStringList names;
    for (const std::u16string& name : decision.answersFor)
        names += shownNamespace(name);
    if (names.isEmpty() && decision.candidate.namespaceName)
        names += shownNamespace(*decision.candidate.namespaceName);
    return names.join("\n");
}

QString stateOf(const SchemaDecision& decision) {
    if (!decision.candidate.problem.empty())
        return SchemasDialog::tr("Not found");
    const SharedSchema* schema = decision.schema.get();
    if (schema && schema->state == SchemaState::reading)
        return SchemasDialog::tr("Being read…");
    if (schema && schema->state == SchemaState::failed)
        return SchemasDialog::tr("Can't be used");
    if (decision.answersFor.empty())
        return SchemasDialog::tr("Not needed");
    return schema && !schema->messages.empty() ? SchemasDialog::tr("In use, with messages")
                                               : SchemasDialog::tr("In use");
}

QString shownMessage(const SchemaMessage& message) {
    QString place = QFileInfo(shown(message.file)).fileName();
    if (message.line > 0)
        place += QString(":%1").arg(message.line);
    if (message.line > 0 && message.column > 0)
        place += QString(":%1").arg(message.column);
    return (place.isEmpty() ? QString() : place + ": ") + shown(message.text);
}

/// A list with its buttons in a column beside it.
template <class List>
QWidget* withButtons(QWidget* parent, const QString& words, List* list, const QList<QPushButton*>& buttons) {
    auto* page = new QWidget(parent);
    auto* column = new QVBoxLayout;
    for (QPushButton* button : buttons) {
        button->setAutoDefault(false);
        column->addWidget(button);
    }
    column->addStretch();
    auto* row = new QHBoxLayout;
    row->addWidget(list);
    row->addLayout(column);
    auto* all = new QVBoxLayout(page);
    auto* label = new QLabel(words, page);
    label->setWordWrap(true);
    all->addWidget(label);
    all->addLayout(row);
    return page;
}

} // namespace

SchemasDialog::SchemasDialog(DocumentSchemas& document, SchemaService& service, Prompts& prompts,
                             const QString& documentName, QWidget* parent)
    : QDialog(parent), document_(document), service_(service), prompts_(prompts) {
    setWindowTitle(tr("Schemas"));
    auto* tabs = new QTabWidget(this);
    tabs->addTab(documentPage(documentName), tr("This &Document"));
    tabs->addTab(mapPage(), tr("My &Map"));
    tabs->addTab(catalogPage(), tr("&Catalogs"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(buttons);
    resize(1040, 520);
    document_.update();
    refresh();
}

QWidget* SchemasDialog::documentPage(const QString& documentName) {
    decisions_ = new QTreeWidget(this);
    decisions_->setObjectName("decisions");
    decisions_->setHeaderLabels({tr("Namespace"), tr("Schema"), tr("Why"), tr("State")});
    decisions_->setRootIsDecorated(true);
    decisions_->setTextElideMode(Qt::ElideMiddle);
    decisions_->setAlternatingRowColors(true);
    decisions_->header()->setStretchLastSection(false);
    for (int column = 0; column < 3; ++column)
        decisions_->header()->setSectionResizeMode(column, QHeaderView::Stretch);
    decisions_->header()->setSectionResizeMode(3, QHeaderView::ResizeToContents);
    auto* bind = new QPushButton(tr("&Bind File…"), this);
    unbind_ = new QPushButton(tr("&Unbind"), this);
    map_ = new QPushButton(tr("Add to M&y Map…"), this);
    connect(bind, &QPushButton::clicked, this, &SchemasDialog::bindFile);
    connect(unbind_, &QPushButton::clicked, this, &SchemasDialog::unbindSelected);
    connect(map_, &QPushButton::clicked, this, &SchemasDialog::mapSelected);
    connect(decisions_, &QTreeWidget::currentItemChanged, this, &SchemasDialog::enableButtons);
    QWidget* page =
        withButtons(this,
                    tr("Schemas of “%1”. For each namespace the first one in this list that knows "
                       "it is used for completion.")
                        .arg(documentName),
                    decisions_, {bind, unbind_, map_});
    reading_ = new QLabel(page);
    details_ = new QLabel(page);
    details_->setWordWrap(true);
    details_->setTextFormat(Qt::PlainText);
    details_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // Long details take from the list and not from the screen.
    details_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    page->layout()->addWidget(details_);
    page->layout()->addWidget(reading_);
    connect(decisions_, &QTreeWidget::currentItemChanged, this, &SchemasDialog::showDetails);
    return page;
}

QWidget* SchemasDialog::mapPage() {
    rules_ = new QTableWidget(0, 3, this);
    rules_->setObjectName("rules");
    rules_->setHorizontalHeaderLabels({tr("For"), tr("Is"), tr("Schema")});
    rules_->horizontalHeader()->setStretchLastSection(true);
    rules_->verticalHeader()->hide();
    rules_->setSelectionBehavior(QAbstractItemView::SelectRows);
    rules_->setSelectionMode(QAbstractItemView::SingleSelection);
    rules_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    auto* add = new QPushButton(tr("&Add…"), this);
    edit_ = new QPushButton(tr("&Edit…"), this);
    remove_ = new QPushButton(tr("&Remove"), this);
    up_ = new QPushButton(tr("Move U&p"), this);
    down_ = new QPushButton(tr("Move Do&wn"), this);
    connect(add, &QPushButton::clicked, this, &SchemasDialog::addRule);
    connect(edit_, &QPushButton::clicked, this, &SchemasDialog::changeRule);
    connect(rules_, &QTableWidget::cellDoubleClicked, this, &SchemasDialog::changeRule);
    connect(remove_, &QPushButton::clicked, this, &SchemasDialog::removeRule);
    connect(up_, &QPushButton::clicked, this, [this] { moveRule(-1); });
    connect(down_, &QPushButton::clicked, this, [this] { moveRule(1); });
    connect(rules_, &QTableWidget::currentCellChanged, this, &SchemasDialog::enableButtons);
    return withButtons(this,
                       tr("Schemas for documents that name none themselves. The first line that fits a "
                          "document is used."),
                       rules_, {add, edit_, remove_, up_, down_});
}

QWidget* SchemasDialog::catalogPage() {
    catalogs_ = new QListWidget(this);
    catalogs_->setObjectName("catalogs");
    catalogs_->setWordWrap(true);
    auto* add = new QPushButton(tr("&Add…"), this);
    removeCatalog_ = new QPushButton(tr("&Remove"), this);
    connect(add, &QPushButton::clicked, this, &SchemasDialog::addCatalog);
    connect(removeCatalog_, &QPushButton::clicked, this, &SchemasDialog::removeCatalog);
    connect(catalogs_, &QListWidget::currentRowChanged, this, &SchemasDialog::enableButtons);
    return withButtons(this,
                       tr("Catalogs say which file stands for a public or system identifier or a namespace. "
                          "Your own are asked first, then the system's. Nothing is fetched from a network."),
                       catalogs_, {add, removeCatalog_});
}

void SchemasDialog::refresh() {
    showDecisions();
    showRules();
    showCatalogs();
    enableButtons();
}

void SchemasDialog::showDecisions() {
    const QTreeWidgetItem* current = decisions_->currentItem();
    const int selected = current ? current->data(0, candidateRole).toInt() : -1;
    decisions_->clear();
    const auto decisions = document_.decisions();
    for (int i = 0; i < static_cast<int>(decisions.size()); ++i) {
        const SchemaDecision& decision = decisions[i];
        const QString location = decision.candidate.builtIn
                                     ? tr("built in")
                                     : shown(decision.schema && !decision.schema->request.file.empty()
                                                 ? pathText(decision.schema->request.file)
                                                 : decision.candidate.location);
        auto* item = new QTreeWidgetItem(decisions_, {namespacesOf(decision), location,
                                                      shown(decision.candidate.reason), stateOf(decision)});
        item->setData(0, candidateRole, i);
        item->setToolTip(1, location);
        QFont font = item->font(0);
        font.setBold(!decision.answersFor.empty());
        item->setFont(3, font);
        QStringList messages;
        if (!decision.candidate.problem.empty())
            messages += shown(decision.candidate.problem);
        if (decision.schema)
            for (const SchemaMessage& message : decision.schema->messages)
                messages += shownMessage(message);
        for (const QString& message : messages) {
            auto* line = new QTreeWidgetItem(item, {message});
            line->setData(0, candidateRole, i);
            line->setFirstColumnSpanned(true);
            line->setToolTip(0, message);
        }
        item->setExpanded(true);
        if (i == selected)
            decisions_->setCurrentItem(item);
    }
    reading_->setText(document_.isReading() ? tr("Schemas are being read…") : QString());
}

void SchemasDialog::showRules() {
    const auto& rules = service_.library().preferences().rules;
    const int row = rules_->currentRow();
    rules_->setRowCount(static_cast<int>(rules.size()));
    for (int i = 0; i < rules_->rowCount(); ++i) {
        rules_->setItem(i, 0, new QTableWidgetItem(ruleKindText(rules[i].kind)));
        rules_->setItem(i, 1, new QTableWidgetItem(shown(rules[i].pattern)));
        rules_->setItem(i, 2, new QTableWidgetItem(shown(rules[i].schema)));
    }
    rules_->setColumnWidth(0, 110);
    rules_->setColumnWidth(1, 280);
    rules_->setCurrentCell(std::min(row, rules_->rowCount() - 1), 0);
}

void SchemasDialog::showCatalogs() {
    const int row = catalogs_->currentRow();
    catalogs_->clear();
    const auto& own = service_.library().preferences().catalogs;
    for (const auto& catalog : own)
        catalogs_->addItem(shown(pathText(catalog)));
    const auto addFixed = [this](const QString& text) {
        auto* item = new QListWidgetItem(text, catalogs_);
        item->setFlags(Qt::NoItemFlags);
    };
    for (const auto& catalog : XmlCatalog::systemFiles())
        addFixed(tr("%1 (the system's)").arg(shown(pathText(catalog))));
    if (const auto& catalog = service_.library().catalog())
        for (const SchemaMessage& message : catalog->messages())
            addFixed(shownMessage(message));
    if (row < static_cast<int>(own.size()))
        catalogs_->setCurrentRow(row);
}

void SchemasDialog::enableButtons() {
    const auto decisions = document_.decisions();
    const QTreeWidgetItem* item = decisions_->currentItem();
    const auto index = item ? item->data(0, candidateRole).toULongLong() : decisions.size();
    const bool isCandidate = index < decisions.size();
    unbind_->setEnabled(isCandidate && decisions[index].candidate.origin == SchemaOrigin::user);
    map_->setEnabled(isCandidate && !decisions[index].candidate.location.empty());
    const int row = rules_->currentRow();
    for (QPushButton* button : {edit_, remove_})
        button->setEnabled(row >= 0);
    up_->setEnabled(row > 0);
    down_->setEnabled(row >= 0 && row + 1 < rules_->rowCount());
    const int own = static_cast<int>(service_.library().preferences().catalogs.size());
    removeCatalog_->setEnabled(catalogs_->currentRow() >= 0 && catalogs_->currentRow() < own);
}

void SchemasDialog::showDetails() {
    const QTreeWidgetItem* item = decisions_->currentItem();
    if (item && item->parent())
        details_->setText(item->text(0));
    else
        details_->setText(item ? item->text(1) + "\n" + item->text(2) : QString());
}

// This document

void SchemasDialog::bindFile() {
    const QString file = prompts_.askSchema(this, tr("Bind a Schema"), {});
    if (file.isEmpty())
        return;
    document_.bind(pathOf(QFileInfo(file).absoluteFilePath().toStdString()), SchemaOrigin::user);
    emit bindingsChanged();
    refresh();
}

void SchemasDialog::unbindSelected() {
    const auto decisions = document_.decisions();
    const QTreeWidgetItem* item = decisions_->currentItem();
    const auto index = item ? item->data(0, candidateRole).toULongLong() : decisions.size();
    if (index >= decisions.size() || !decisions[index].candidate.request)
        return;
    document_.unbind(decisions[index].candidate.request->file, SchemaOrigin::user);
    emit bindingsChanged();
    refresh();
}

void SchemasDialog::mapSelected() {
    const auto decisions = document_.decisions();
    const QTreeWidgetItem* item = decisions_->currentItem();
    const auto index = item ? item->data(0, candidateRole).toULongLong() : decisions.size();
    if (index >= decisions.size())
        return;
    const SchemaDecision& decision = decisions[index];
    SchemaRule rule{.schema = decision.schema && !decision.schema->request.file.empty()
                                  ? pathText(decision.schema->request.file)
                                  : decision.candidate.location};
    if (!decision.answersFor.empty())
        rule.pattern = toUtf8(decision.answersFor.front());
    else if (decision.candidate.namespaceName)
        rule.pattern = toUtf8(*decision.candidate.namespaceName);
    if (editRule(rule, tr("Add to My Map")))
        changePreferences([&](SchemaPreferences& preferences) { preferences.rules.push_back(rule); });
}

// The map

bool SchemasDialog::editRule(SchemaRule& rule, const QString& title) {
    SchemaRuleDialog dialog(rule, prompts_, this);
    dialog.setWindowTitle(title);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    rule = dialog.rule();
    return true;
}

void SchemasDialog::changePreferences(const std::function<void(SchemaPreferences&)>& change) {
    SchemaPreferences preferences = service_.library().preferences();
    change(preferences);
    service_.setPreferences(std::move(preferences));
    refresh();
}

void SchemasDialog::addRule() {
    SchemaRule rule;
    if (editRule(rule, tr("Add to My Map")))
        changePreferences([&](SchemaPreferences& preferences) { preferences.rules.push_back(rule); });
}

void SchemasDialog::changeRule() {
    const int row = rules_->currentRow();
    if (row < 0)
        return;
    SchemaRule rule = service_.library().preferences().rules[row];
    if (editRule(rule, tr("Edit")))
        changePreferences([&](SchemaPreferences& preferences) { preferences.rules[row] = rule; });
}

void SchemasDialog::removeRule() {
    const int row = rules_->currentRow();
    if (row >= 0)
        changePreferences([&](SchemaPreferences& preferences) {
            preferences.rules.erase(preferences.rules.begin() + row);
        });
}

void SchemasDialog::moveRule(int by) {
    const int row = rules_->currentRow();
    if (row < 0 || row + by < 0 || row + by >= rules_->rowCount())
        return;
    changePreferences([&](SchemaPreferences& preferences) {
        std::swap(preferences.rules[row], preferences.rules[row + by]);
    });
    rules_->setCurrentCell(row + by, 0);
}

// Catalogs

void SchemasDialog::addCatalog() {
    const QString file = prompts_.askSchema(this, tr("Add a Catalog"), {});
    if (!file.isEmpty())
        changePreferences([&](SchemaPreferences& preferences) {
            preferences.catalogs.push_back(pathOf(QFileInfo(file).absoluteFilePath().toStdString()));
        });
}

void SchemasDialog::removeCatalog() {
    const int row = catalogs_->currentRow();
    if (row >= 0)
        changePreferences([&](SchemaPreferences& preferences) {
            preferences.catalogs.erase(preferences.catalogs.begin() + row);
        });
}

} // namespace tavrin::app
