#include "platform/schema/GuardedXml.h"
#include "platform/schema/LargeStack.h"
#include "platform/schema/SchemaText.h"
#include "platform/schema/XmlSchemaModel.h"

#include <csetjmp>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/framework/psvi/XSModel.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/util/XMLNetAccessor.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace tavrin {

struct XmlSchemaComponents {
    xercesc::XSModel& model;
};

namespace {

namespace fs = std::filesystem;

/// Xerces calls itself for each step from one component to the next; its stack is watched.
constexpr std::size_t stackSize = 48u << 20;
constexpr std::size_t stackToUse = 24u << 20;

/// What schemas need of the xml namespace, for those that import it from where nobody can fetch it.
constexpr std::string_view xmlSchemaForXml = R"(<?xml version="1.0"?>
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" targetNamespace="http://www.w3.org/XML/1998/namespace">
  <xs:attribute name="lang">
    <xs:annotation><xs:documentation>The language of the content, as a language tag.</xs:documentation></xs:annotation>
    <xs:simpleType>
      <xs:union memberTypes="xs:language"><xs:simpleType><xs:restriction base="xs:string">
        <xs:enumeration value=""/>
      </xs:restriction></xs:simpleType></xs:union>
    </xs:simpleType>
  </xs:attribute>
  <xs:attribute name="space">
    <xs:annotation><xs:documentation>Whether white space in the content means something.</xs:documentation></xs:annotation>
    <xs:simpleType><xs:restriction base="xs:NCName">
      <xs:enumeration value="default"/><xs:enumeration value="preserve"/>
    </xs:restriction></xs:simpleType>
  </xs:attribute>
  <xs:attribute name="base" type="xs:anyURI">
    <xs:annotation><xs:documentation>What relative references in the content start from.</xs:documentation></xs:annotation>
  </xs:attribute>
  <xs:attribute name="id" type="xs:ID">
    <xs:annotation><xs:documentation>A name for the element, unique in the document.</xs:documentation></xs:annotation>
  </xs:attribute>
  <xs:attributeGroup name="specialAttrs">
    <xs:attribute ref="xml:base"/><xs:attribute ref="xml:lang"/>
    <xs:attribute ref="xml:space"/><xs:attribute ref="xml:id"/>
  </xs:attributeGroup>
</xs:schema>)";
constexpr std::string_view xmlNamespaceUri = "http://www.w3.org/XML/1998/namespace";

std::string text(const XMLCh* xerces) {
    return xerces ? toUtf8(xerces) : std::string();
}

/// Holds Xerces ready while it is needed. A host that uses Xerces too must have initialised it before.
class XercesLibrary {
  public:
    XercesLibrary() {
        const std::lock_guard lock(mutex);
        if (users == 0) {
            initialize();
            netAccessor = std::exchange(xercesc::XMLPlatformUtils::fgNetAccessor, nullptr);
        }
        ++users;
    }
    ~XercesLibrary() {
        const std::lock_guard lock(mutex);
        if (--users > 0)
            return;
        xercesc::XMLPlatformUtils::fgNetAccessor = netAccessor;
        xercesc::XMLPlatformUtils::Terminate();
    }
    XercesLibrary(const XercesLibrary&) = delete;
    XercesLibrary& operator=(const XercesLibrary&) = delete;

  private:
    /// In place of the one that ends the program.
    class PanicHandler : public xercesc::PanicHandler {
        void panic(const PanicReasons) override { throw std::bad_alloc(); }
    };

    /// Xerces can't be set up once more after it came to a stop half way.
    static void initialize() {
        if (isHalfSetUp)
            throw std::runtime_error("the reader found too little memory once; start the program again.");
        isHalfSetUp = true;
        try {
            xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr, &panic);
        } catch (const xercesc::OutOfMemoryException&) {
            throw std::bad_alloc();
        }
        isHalfSetUp = false;
    }

    static inline PanicHandler panic;
    static inline std::mutex mutex;
    static inline int users = 0;
    static inline bool isHalfSetUp = false;
    static inline xercesc::XMLNetAccessor* netAccessor = nullptr;
};

/// The memory of one reading. When there is too much of it or none to be had, when the stack has grown too
/// deep or when the time is over, it ends the work that run() does, wherever that is.
///
/// It does so by a jump and not by an exception: destructors of Xerces take memory too, and an exception from
/// one ends the program. What the destructors that are left out would free lies in this memory and goes with
/// it. Therefore nothing but Xerces may be on the way of the jump: our own code, when Xerces calls it, holds
/// a Pause.
class WatchedMemory : public xercesc::MemoryManager {
  public:
    explicit WatchedMemory(SchemaReading& reading) : reading_(reading) {}
    ~WatchedMemory() override {
        while (last_)
            std::free(std::exchange(last_, last_->previous));
    }
    WatchedMemory(const WatchedMemory&) = delete;
    WatchedMemory& operator=(const WatchedMemory&) = delete;

    /// False when the work was left before its end; the reading then knows why. Throws std::bad_alloc when
    /// there was no memory.
    bool run(const std::function<void()>& work) {
        stackStart_ = static_cast<const char*>(__builtin_frame_address(0));
        if (setjmp(start_) != 0) {
            isWatching_ = false;
            if (isExhausted_)
                throw std::bad_alloc();
            return false;
        }
        isWatching_ = true;
        work();
        isWatching_ = false;
        return true;
    }
    /// Runs destructors. Without memory for them they stay where they are.
    void takeDown(const std::function<void()>& work) {
        hasLimits_ = false;
        isWatching_ = true;
        if (setjmp(start_) == 0)
            work();
        isWatching_ = false;
    }
    /// Runs what Xerces calls. No exception leaves it: without memory the work that run() does is over.
    template <class Work>
    void call(Work work) {
        try {
            const Pause pause(*this);
            work();
            return;
        } catch (const std::bad_alloc&) {
            isExhausted_ = true;
        } catch (const xercesc::OutOfMemoryException&) {
            isExhausted_ = true;
        }
        if (isWatching_)
            std::longjmp(start_, 1);
    }
    class Pause {
      public:
        explicit Pause(WatchedMemory& memory)
            : memory_(memory), wasWatching_(std::exchange(memory.isWatching_, false)) {}
        ~Pause() { memory_.isWatching_ = wasWatching_; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

      private:
        WatchedMemory& memory_;
        bool wasWatching_;
    };

    void* allocate(XMLSize_t size) override {
        auto* block = static_cast<Block*>(std::malloc(sizeof(Block) + size));
        if (isWatching_ && (!block || (hasLimits_ && mustStop(size)))) {
            isExhausted_ = isExhausted_ || !block;
            std::free(block);
            std::longjmp(start_, 1);
        }
        if (!block)
            throw xercesc::OutOfMemoryException();
        *block = {last_, nullptr, size};
        if (last_)
            last_->next = block;
        last_ = block;
        used_ += size + sizeof(Block);
        return block + 1;
    }
    void deallocate(void* memory) override {
        if (!memory)
            return;
        Block* block = static_cast<Block*>(memory) - 1;
        used_ -= block->size + sizeof(Block);
        (block->next ? block->next->previous : last_) = block->previous;
        if (block->previous)
            block->previous->next = block->next;
        std::free(block);
    }
    xercesc::MemoryManager* getExceptionMemoryManager() override {
        return xercesc::XMLPlatformUtils::fgMemoryManager;
    }

  private:
    struct alignas(std::max_align_t) Block {
        Block* previous;
        Block* next;
        std::size_t size;
    };

    [[nodiscard]] bool mustStop(std::size_t size) noexcept {
        try {
            return isOver(size);
        } catch (const std::bad_alloc&) { // for the words that say why
            isExhausted_ = true;
            return true;
        }
    }
    [[nodiscard]] bool isOver(std::size_t size) {
        const auto* here = static_cast<const char*>(__builtin_frame_address(0));
        if (static_cast<std::size_t>(std::abs(stackStart_ - here)) > stackToUse)
            reading_.giveUp("The parts of the schema refer to one another in too long chains.");
        else if (used_ + size > reading_.limits().workMemory)
            reading_.giveUp("Reading the schema took more than " +
                            std::to_string(reading_.limits().workMemory) + " bytes of memory.");
        const bool isTimeToLook = ++allocations_ % 256 == 0;
        return reading_.gaveUp() || (isTimeToLook && !reading_.mayGoOn());
    }

    SchemaReading& reading_;
    std::jmp_buf start_ = {};
    bool isWatching_ = false;
    bool isExhausted_ = false; ///< there was no memory
    bool hasLimits_ = true;
    const char* stackStart_ = nullptr;
    Block* last_ = nullptr;
    std::size_t used_ = 0;
    unsigned allocations_ = 0;
};

/// A document that Xerces is to do without.
class NoSource : public xercesc::InputSource {
  public:
    NoSource(const XMLCh* systemId, xercesc::MemoryManager* memory) : InputSource(systemId, memory) {
        setIssueFatalErrorIfNotFound(false);
    }
    [[nodiscard]] xercesc::BinInputStream* makeStream() const override { return nullptr; }
};

/// One run of Xerces: what it asks for and what it complains of.
class Run : public xercesc::XMLEntityResolver, public xercesc::ErrorHandler {
  public:
    explicit Run(SchemaReading& reading) : reading_(reading), documents_(reading), memory_(reading) {}

    void read(const fs::path& file, VocabularyBuilder& builder);

    xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* id) override;
    void warning(const xercesc::SAXParseException& e) override {
        memory_.call([&] { take(e, SchemaMessage::Severity::warning); });
    }
    void error(const xercesc::SAXParseException& e) override {
        memory_.call([&] { take(e, SchemaMessage::Severity::error); });
    }
    void fatalError(const xercesc::SAXParseException& e) override { error(e); }
    void resetErrors() override {}

  private:
    void load(const fs::path& file, VocabularyBuilder& builder);
    [[nodiscard]] xercesc::InputSource* sourceFor(const xercesc::XMLResourceIdentifier& id);
    void take(const xercesc::SAXParseException& exception, SchemaMessage::Severity severity);
    [[nodiscard]] xercesc::InputSource* sourceOf(std::string_view bytes, const std::string& uri);

    SchemaReading& reading_;
    XmlSchemaDocuments documents_;
    WatchedMemory memory_;
    bool isBlocked_ = false; ///< the document asked for last is not there, and it has been said why
};

xercesc::InputSource* Run::sourceOf(std::string_view bytes, const std::string& uri) {
    return new (&memory_) xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(bytes.data()),
                                                     bytes.size(), toUtf16(uri).c_str(), false, &memory_);
}

xercesc::InputSource* Run::resolveEntity(xercesc::XMLResourceIdentifier* id) {
    xercesc::InputSource* source = nullptr;
    memory_.call([&] { source = sourceFor(*id); });
    return source;
}

xercesc::InputSource* Run::sourceFor(const xercesc::XMLResourceIdentifier& id) {
    using Identifier = xercesc::XMLResourceIdentifier;
    const std::string base = text(id.getBaseURI());
    const fs::path from = pathOfUri(base);
    if (id.getResourceIdentifierType() == Identifier::ExternalEntity ||
        id.getResourceIdentifierType() == Identifier::UnKnown)
        return sourceOf("", text(id.getSystemId()));
    SchemaReference reference = SchemaReading::referenceFrom(from, text(id.getSystemId()));
    reference.namespaceName = text(id.getNameSpace());
    const bool isXml = reference.namespaceName == xmlNamespaceUri;
    SchemaPlace place{from.string()};
    if (const xercesc::Locator* at = id.getLocator())
        place.line = static_cast<int>(at->getLineNumber());
    if (const auto file = reading_.locate(reference, place, isXml || reference.systemId.empty()))
        if (const std::string& bytes = documents_.checked(*file, place); !bytes.empty())
            return sourceOf(bytes, fileUri(*file));
    if (isXml)
        return sourceOf(xmlSchemaForXml, "tavrin:xml.xsd");
    isBlocked_ = true;
    return new (&memory_) NoSource(id.getSystemId(), &memory_);
}

void Run::take(const xercesc::SAXParseException& exception, SchemaMessage::Severity severity) {
    if (exception.getLineNumber() == 0 && severity == SchemaMessage::Severity::warning &&
        std::exchange(isBlocked_, false))
        return;
    const std::string uri = text(exception.getSystemId());
    const fs::path file = pathOfUri(uri);
    const bool hasColumn = documents_.hasColumns(file);
    reading_.report({severity, file.string(), static_cast<int>(exception.getLineNumber()),
                     hasColumn ? static_cast<int>(exception.getColumnNumber()) : 0,
                     text(exception.getMessage())});
}

void Run::load(const fs::path& file, VocabularyBuilder& builder) {
    const std::string& bytes = documents_.checked(file);
    if (bytes.empty())
        return;
    xercesc::XMLGrammarPoolImpl* pool = nullptr;
    xercesc::SAX2XMLReaderImpl* parser = nullptr;
    xercesc::XSModel* model = nullptr;
    const std::unique_ptr<xercesc::InputSource> source(sourceOf(bytes, fileUri(file)));
    const bool isWhole = memory_.run([&] {
        using xercesc::XMLUni;
        pool = new (&memory_) xercesc::XMLGrammarPoolImpl(&memory_);
        parser = new (&memory_) xercesc::SAX2XMLReaderImpl(&memory_, pool);
        parser->setFeature(XMLUni::fgSAX2CoreNameSpaces, true);
        parser->setFeature(XMLUni::fgXercesSchema, true);
        parser->setFeature(XMLUni::fgXercesHandleMultipleImports, true);
        parser->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
        parser->setFeature(XMLUni::fgXercesContinueAfterFatalError, true);
        parser->setXMLEntityResolver(this);
        parser->setErrorHandler(this);
        parser->loadGrammar(*source, xercesc::Grammar::SchemaGrammarType, true);
        bool isChanged = false;
        model = pool->getXSModel(isChanged);
    });
    if (!isWhole)
        return; // what is half built is not taken down but goes with the memory
    if (model) {
        documents_.notePrefixes(builder);
        XmlSchemaComponents components{*model};
        declareComponents(reading_, documents_, components, builder);
    }
    memory_.takeDown([&] {
        delete parser;
        delete pool;
    });
}

void Run::read(const fs::path& file, VocabularyBuilder& builder) {
    try {
        load(file, builder);
    } catch (const xercesc::OutOfMemoryException&) {
        throw std::bad_alloc();
    } catch (const xercesc::XMLException& e) {
        reading_.error({file.string()}, text(e.getMessage()));
    } catch (const xercesc::SAXException& e) {
        reading_.error({file.string()}, text(e.getMessage()));
    }
}

} // namespace

SchemaReadResult readXmlSchema(const fs::path& file, const SchemaReadOptions& options) {
    return readGuarded([&] {
        SchemaReading reading(options);
        VocabularyBuilder builder;
        runOnLargeStack(stackSize, [&] {
            const XercesLibrary library;
            Run(reading).read(file, builder);
        });
        return reading.finish(builder);
    });
}

} // namespace tavrin
