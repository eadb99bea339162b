#include "layout/pdf_exporter.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <memory>
#include <thread>
#include <tuple>

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
    auto layout = std::make_unique<Layout>(input);
    Pagination first = layout->paginate({});
    Pagination second = layout->paginate(first.markers);
    Output output;
    output.pageCount = static_cast<int>(second.pages.size());
    std::string drawn = layout->render(second.pages, progress);
    // Freeing thousands of typeset paragraphs takes a while: it happens
    // while QPDF rewrites the file.
    std::jthread release(
        [gone = std::make_tuple(std::move(layout), std::move(first), std::move(second))] {});
    output.data = finish(drawn);
    return output;
}

std::vector<std::string> splitDrawn(const ExportInput& input, const std::string& data,
                                    int64_t maxBytes) {
    if (static_cast<int64_t>(data.size()) <= maxBytes) return {data};
    // Copied pages give safe boundaries: a part drawn on its own holds no
    // more than its copy, whose fonts are the whole document's.
    std::vector<size_t> starts{0};
    split(data, maxBytes, &starts);
    Layout layout(input);
    Pagination first = layout.paginate({});
    Pagination second = layout.paginate(first.markers);
    if (starts.back() != second.pages.size())
        throw EvidenceError::invalid("Could not create the PDF.");
    auto drawn = [&](size_t from, size_t to) {
        return finish(layout.render(second.pages, {}, starts[from], starts[to]));
    };
    auto fits = [&](const std::string& part) {
        return static_cast<int64_t>(part.size()) <= maxBytes;
    };

    // From each boundary, whole copied parts are joined while the drawn
    // result stays under the limit: doubling the step, then halving it.
    std::vector<std::string> parts;
    const size_t count = starts.size() - 1;
    for (size_t from = 0; from < count;) {
        size_t to = from + 1;
        std::string best = drawn(from, to);
        size_t step = 1;
        while (to < count) {
            std::string candidate = drawn(from, std::min(count, to + step));
            if (!fits(candidate)) break;
            best = std::move(candidate);
            to = std::min(count, to + step);
            step *= 2;
        }
        for (step /= 2; step >= 1 && to < count; step /= 2) {
            std::string candidate = drawn(from, std::min(count, to + step));
            if (!fits(candidate)) continue;
            best = std::move(candidate);
            to = std::min(count, to + step);
        }
        parts.push_back(std::move(best));
        from = to;
    }
    return parts;
}

}  // namespace kinfolio::PDFExporter
