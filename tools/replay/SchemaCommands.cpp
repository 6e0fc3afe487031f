#include "replay/SchemaCommands.h"

#include "control/SchemaDocument.h"
#include "platform/schema/SchemaLocation.h"
#include "platform/schema/SchemaSources.h"
#include "replay/ReplaySession.h"

#include <algorithm>

namespace tavrin::replay {

namespace fs = std::filesystem;

struct ReplaySchemas::Service {
    explicit Service(const Buffer& buffer, const fs::path& path)
        : library(thread, {.load = fileSchemaLoader(), .builtIn = builtInVocabularies()}),
          document(schemaDocument(buffer, [&path] { return path.empty() ? fs::current_path() / "" : path; }),
                   library) {}

    void settle() {
        while (!library.isIdle())
            thread.waitAndRun();
    }

    QueuedEditorThread thread;
    SchemaLibrary library;
    DocumentSchemas document;
};

ReplaySchemas::Service& ReplaySchemas::service() {
    if (!service_)
        service_ = std::make_shared<Service>(buffer_, path_);
    return *service_;
}

void ReplaySchemas::bind(const fs::path& schema) {
    const fs::path file = fs::absolute(schema).lexically_normal();
    std::error_code error;
    if (!fs::exists(file, error))
        throw BadLine("can't open '" + pathText(schema) + "': No such file or directory");
    DocumentSchemas& document = service().document;
    const auto before = document.bound();
    document.bind(file);
    service().settle();
    const auto decisions = document.decisions();
    const auto found = std::ranges::find_if(decisions, [&](const SchemaDecision& decision) {
        return decision.schema && decision.schema->request.file == file;
    });
    if (found == decisions.end() || found->schema->state == SchemaState::ready)
        return;
    std::string reason;
    if (!found->schema->messages.empty())
        reason = ": " + found->schema->messages.front().text;
    document.setBound(before);
    throw BadLine("can't use the schema '" + pathText(schema) + "'" + reason);
}

SmartPtr<IXSchema> ReplaySchemas::schemaAt(const SchemaContext& context) {
    // The first question has everything read that the place needs, also what only came to light by reading.
    (void)service().document.schemaAt(context);
    service().settle();
    SmartPtr<IXSchema> answer = service().document.schemaAt(context);
    service().settle();
    return answer;
}

void bindSchema(ReplaySession& session, Arguments& arguments) {
    const std::u16string path = arguments.stringOrWord("the path");
    arguments.finish();
    session.schemas().bind(pathOf(json::toUtf8(path)));
}

} // namespace tavrin::replay
