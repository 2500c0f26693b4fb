#pragma once

#include "platform/engine/EngineProcess.h"
#include "platform/foundation/Value.h"
#include "platform/pdfkit/PDFEngineMessages.h"

#include <cstdint>

namespace kelvo {

/// A document that was opened once. It keeps its place in the engine until another one takes it, and gives it up at its
/// end.
struct OpenPDF {
    OpenPDF() = default;
    OpenPDF(const OpenPDF&) = delete;
    OpenPDF& operator=(const OpenPDF&) = delete;
    ~OpenPDF();

    NSData data;
    std::int64_t number = 0;
    bool isLocked = false;
    std::size_t pageCount = 0;
    NSDictionary attributes;
};

/// plumwick-pdf-engine, as all documents share it.
class PDFEngine {
public:
    static PDFEngine& sharedEngine();
    PDFEngine(const PDFEngine&) = delete;
    PDFEngine& operator=(const PDFEngine&) = delete;

    /// What the engine says of the document; nil when it is none. Throws as EngineProcess::ask does; so do the others.
    NSDictionary open(const OpenPDF& document, double timeoutSeconds);
    /// What the engine answers about a page, nil when there is none. Opens the document anew where the engine does not
    /// have it any more; the time is that of both.
    Value read(const OpenPDF& document, pdfengine::Want want, std::size_t page, double timeoutSeconds) {
        return read(document, want, page, timeoutSeconds, NSMutableDictionary::dictionary());
    }
    /// The message's other fields are in `fields`.
    Value read(const OpenPDF& document, pdfengine::Want want, std::size_t page, double timeoutSeconds,
               NSMutableDictionary fields);
    /// Has the engine let go of the document, if it has it.
    void close(const OpenPDF& document) noexcept;

    /// Ends it; the next question starts another. An engine ends with its process anyhow, but leaves its empty folder
    /// behind then.
    void stop() { process_.stop(); }

    /// 0 when none runs.
    pid_t processIdentifier() const { return process_.processIdentifier(); }

private:
    PDFEngine();

    EngineProcess process_;
    /// The document that was opened last, and where.
    std::int64_t openNumber_ = 0;
    pid_t openIn_ = 0;
};

} // namespace kelvo
