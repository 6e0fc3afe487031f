#pragma once

#include "platform/schema/DocumentSchemas.h"
#include "replay/Arguments.h"

#include <filesystem>
#include <memory>

namespace tavrin {
class Buffer;
}

namespace tavrin::replay {

class ReplaySession;

/// The schemas of a script's document. Whatever completion needs is read before it goes on, so that a script
/// gives the same result every time. Nothing is started or read until somebody asks.
class ReplaySchemas final : public ISchemaSource {
  public:
    explicit ReplaySchemas(const Buffer& buffer) : buffer_(buffer) {}

    /// Where relative locations in the document start: the folder of this file. Without one, that in which
    /// the program runs.
    void setPath(const std::filesystem::path& path) { path_ = std::filesystem::absolute(path); }
    /// Binds a schema and reads it. Throws BadLine when nothing can be read.
    void bind(const std::filesystem::path& schema);

    [[nodiscard]] SmartPtr<IXSchema> schemaAt(const SchemaContext& context) override;

  private:
    struct Service;

    Service& service();

    const Buffer& buffer_;
    std::filesystem::path path_;
    std::shared_ptr<Service> service_;
};

/// `schema PATH`.
void bindSchema(ReplaySession& session, Arguments& arguments);

} // namespace tavrin::replay
