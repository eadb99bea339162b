#include "layout/pdf_exporter.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include "layout/layout.h"

namespace kinfolio::PDFExporter {

namespace {

// cairo writes its own producer and a creation date, and a damaged
// cross-reference table once links exist. Rewriting through QPDF repairs the
// table, leaves the creator as the only document information and derives
// the file identifier from the content, so the same input always gives the
// same bytes and anyone can re-create the file and compare.
std::string finish(const std::string& raw) {
    try {
        QPDF pdf;
        pdf.setSuppressWarnings(true);
        pdf.processMemoryFile("export", raw.data(), raw.size());
        QPDFObjectHandle info = QPDFObjectHandle::newDictionary();
        info.replaceKey("/Creator", QPDFObjectHandle::newUnicodeString("Kinfolio"));
        pdf.getTrailer().replaceKey("/Info", pdf.makeIndirectObject(info));
        QPDFWriter writer(pdf);
        writer.setOutputMemory();
        writer.setDeterministicID(true);
        writer.setObjectStreamMode(qpdf_o_generate);
        writer.write();
        auto buffer = writer.getBufferSharedPointer();
        return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
    } catch (const std::exception&) {
        throw EvidenceError::invalid("Could not create the PDF.");
    }
}

}  // namespace

Output make(const ExportInput& input, const Progress& progress) {
    if (input.items.empty()) throw EvidenceError::invalid("Nothing is selected.");
    for (const auto& item : input.items)
        if (!input.files.count(item.fileID))
            throw EvidenceError::invalid(
                "The source file for an item is missing. Scan the folder again.");
    Layout layout(input);
    Pagination first = layout.paginate({});
    Pagination second = layout.paginate(first.markers);
    Output output;
    output.data = finish(layout.render(second.pages, progress));
    output.pageCount = static_cast<int>(second.pages.size());
    return output;
}

}  // namespace kinfolio::PDFExporter
