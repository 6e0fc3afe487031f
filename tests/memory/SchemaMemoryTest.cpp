// Schemas with every allocation failing in turn, on whatever thread: what was not read is told in words, and
// is read when somebody asks again.

#include "memory/MemorySession.h"
#include "platform/schema/DocumentSchemas.h"
#include "platform/schema/SchemaSources.h"
#include "recovery/Session.h"

#include <iostream>
#include <optional>
#include <xercesc/util/PlatformUtils.hpp>

namespace tavrin {
namespace {

using test::FailingMemory;
using test::Threads;

/// Files in each language, with others that they take in and something to complain of.
class SchemaMemory : public testing::Test {
  protected:
    SchemaMemory() {
        xercesc::XMLPlatformUtils::Initialize(); // its own set-up can't be repeated when it fails
        write("t.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns='urn:t' "
                       "targetNamespace='urn:t'><xs:include schemaLocation='in.xsd'/>"
                       "<xs:element name='r' type='c'/></xs:schema>");
        write("in.xsd",
              "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns='urn:t' "
              "targetNamespace='urn:t'><xs:import namespace='http://www.w3.org/XML/1998/namespace'/>"
              "<xs:complexType name='c'><xs:choice maxOccurs='9'><xs:element name='x'/>"
              "<xs:element name='y' type='xs:int'/></xs:choice><xs:attribute name='a'><xs:simpleType>"
              "<xs:restriction base='xs:token'><xs:enumeration value='one'/><xs:enumeration value='two'/>"
              "</xs:restriction></xs:simpleType></xs:attribute></xs:complexType></xs:schema>");
        write("t.dtd", "<!ENTITY % more SYSTEM 'in.dtd'>%more;<!ENTITY % c '(x | y)*'><!ELEMENT r %c;>"
                       "<!ATTLIST r a (one | two) 'one' xmlns CDATA #FIXED 'urn:t'>");
        write("in.dtd", "<!ELEMENT x EMPTY><!ELEMENT y (#PCDATA)>");
        write("t.rng",
              "<grammar xmlns='http://relaxng.org/ns/structure/1.0' ns='urn:t'><include href='in.rng'/>"
              "<start><element name='r'><optional><attribute name='a'><choice><value>one</value>"
              "<value>two</value></choice></attribute></optional><ref name='c'/></element></start>"
              "</grammar>");
        write("in.rng", "<grammar xmlns='http://relaxng.org/ns/structure/1.0' ns='urn:t'><define name='c'>"
                        "<zeroOrMore><choice><element name='x'><empty/></element><element name='y'><text/>"
                        "</element></choice></zeroOrMore></define></grammar>");
        write("bad.dtd", "<!ELEMENT r (x>");
        write("bad.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='r' "
                         "type='none'/><xs:include schemaLocation='gone.xsd'/></xs:schema>");
    }

    ~SchemaMemory() override { xercesc::XMLPlatformUtils::Terminate(); }

    void write(const char* name, const std::string& text) const { test::put(folder.path / name, text); }
    [[nodiscard]] SchemaRequest request(const char* name) const { return {.file = folder.path / name}; }
    [[nodiscard]] SchemaLibrary::Options options() const {
        return {.load = fileSchemaLoader(), .systemCatalogs = {folder.path / "catalog.xml"}};
    }

    static constexpr const char* names[] = {"t.xsd", "t.dtd", "t.rng", "bad.xsd", "bad.dtd"};
    const test::TemporaryFolder folder;
};

std::vector<std::u16string> contents(const Vocabulary& vocabulary) {
    std::vector<std::u16string> all;
    for (int i = 0; i < vocabulary.elementCount(); ++i) {
        const VocabularyElement& element = vocabulary.element(i);
        all.push_back(element.name.namespaceName + u"|" + element.name.localName);
        for (const int child : element.children)
            all.push_back(u"  " + vocabulary.element(child).name.localName);
    }
    return all;
}

void settle(SchemaLibrary& library, QueuedEditorThread& thread) {
    while (!library.isIdle())
        try {
            thread.waitAndRun();
        } catch (const std::bad_alloc&) { // as an event loop does
        }
}

TEST_F(SchemaMemory, readersSayWhatTheyLeaveOut) {
    const SchemaLoader load = fileSchemaLoader();
    const XmlCatalog catalog;
    for (const char* name : names) {
        const SchemaReadResult whole = load(request(name), catalog, {});
        long points = 0;
        for (const bool stays : {false, true}) {
            bool hasFailed = true;
            for (long point = 0; hasFailed && !HasFailure(); point = test::nextPoint(point, 60)) {
                SCOPED_TRACE(testing::Message() << name << " " << point << (stays ? " for good" : ""));
                std::optional<SchemaReadResult> read;
                {
                    const FailingMemory memory(point, stays, Threads::All);
                    try {
                        read = load(request(name), catalog, {});
                    } catch (const std::bad_alloc&) { // the library has the words for it
                    }
                    hasFailed = memory.hasFailed();
                }
                if (read && read->messages.size() <= whole.messages.size()) {
                    EXPECT_TRUE(contents(*read->vocabulary) == contents(*whole.vocabulary));
                }
                points += hasFailed ? 1 : 0;
            }
        }
        EXPECT_GT(points, 0);
        std::cout << name << ": " << points << " failures\n";
    }
}

TEST_F(SchemaMemory, theWorkerTellsAndReadsAgain) {
    for (const char* name : {"t.rng", "t.xsd"}) {
        long points = 0;
        bool hasFailed = true;
        for (long point = 0; hasFailed && !HasFailure(); point = test::nextPoint(point, 20), ++points) {
            SCOPED_TRACE(testing::Message() << name << " " << point);
            QueuedEditorThread thread;
            SchemaLibrary library(thread, options());
            settle(library, thread);
            std::shared_ptr<const SharedSchema> schema;
            {
                const FailingMemory memory(point, false, Threads::Others);
                schema = library.request(request(name));
                settle(library, thread);
                hasFailed = memory.hasFailed();
            }
            EXPECT_FALSE(schema->isBeingRead);
            const bool isWhole = schema->vocabulary->elementCount() == 3;
            EXPECT_TRUE(isWhole || !schema->messages.empty());
            static_cast<void>(library.request(request(name)));
            settle(library, thread);
            EXPECT_EQ(schema->state, SchemaState::ready);
            EXPECT_EQ(schema->vocabulary->elementCount(), 3);
            EXPECT_TRUE(schema->messages.empty());
        }
        std::cout << name << " on the worker: " << points << " failures\n";
    }
}

TEST_F(SchemaMemory, documentsGetTheirSchemasTheNextTime) {
    const DocumentSchemas::Document document{
        .beginning =
            [](std::size_t) { return std::u16string(u"<!DOCTYPE r SYSTEM 't.dtd'><r xmlns='urn:t'/>"); },
        .path = [this] { return folder.path / "document.xml"; }};
    SchemaContext context;
    context.bindings = {{u"", u"urn:t"}};
    const auto children = [](const SmartPtr<IXSchema>& schema) {
        int count = 0;
        for (const auto elements = schema->getChildElements(u"urn:t", u"r"); elements->next();)
            ++count;
        return count;
    };
    long points = 0;
    for (const bool stays : {false, true}) {
        bool hasFailed = true;
        for (long point = 0; hasFailed && !HasFailure(); point = test::nextPoint(point, 60)) {
            SCOPED_TRACE(testing::Message() << point << (stays ? " for good" : ""));
            QueuedEditorThread thread;
            std::optional<SchemaLibrary> library;
            std::optional<DocumentSchemas> schemas;
            hasFailed = test::failing(point, stays, [&] {
                library.emplace(thread, options());
                schemas.emplace(document, *library);
                settle(*library, thread);
                static_cast<void>(schemas->schemaAt(context));
                settle(*library, thread);
                static_cast<void>(children(schemas->schemaAt(context)));
            });
            if (!library)
                library.emplace(thread, options());
            if (!schemas)
                schemas.emplace(document, *library);
            for (int i = 0; i < 2; ++i) {
                static_cast<void>(schemas->schemaAt(context));
                settle(*library, thread);
            }
            EXPECT_EQ(children(schemas->schemaAt(context)), 2);
            settle(*library, thread);
            points += hasFailed ? 1 : 0;
        }
    }
    EXPECT_GT(points, 0);
    std::cout << "documents: " << points << " failures\n";
}

} // namespace
} // namespace tavrin
