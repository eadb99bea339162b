// The newer qpdf interface only, without its transition warning.

#include <qpdf/Buffer.hh>
#include <qpdf/Pl_Count.hh>
#include <qpdf/Pl_Discard.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>

#include "layout/pdf_exporter.h"
#include "model/evidence.h"

namespace kinfolio::PDFExporter {
namespace {

const char* const kReopenFailed = "Could not reopen the PDF to split it.";

// Where a link or an outline entry leads: a page of the whole document and
// the rest of its destination array (the view, such as /XYZ left top zoom).
struct Target {
    size_t page = 0;
    std::string view;                 // the array without its page, as PDF text
    std::optional<std::string> name;  // set when reached through a named destination
};

// A link annotation on a page that leads to a page of the same document.
// Its destination is taken off the annotation before any page is copied, so
// that copying one page never drags another page's objects along.
struct Link {
    size_t position = 0;  // index in the page's /Annots
    Target target;
    bool viaAction = false;  // /A << /S /GoTo >> rather than /Dest
};

struct OutlineEntry {
    std::string title;   // PDF string bytes as written
    std::string extras;  // /F and /C, as PDF text
    bool open = false;
    std::optional<Target> target;
    std::vector<OutlineEntry> kids;
};

// The whole document, opened once and prepared for copying pages out of it.
class OpenedPDF {
public:
    explicit OpenedPDF(const std::string& data) {
        try {
            qpdf_.setSuppressWarnings(true);
            qpdf_.processMemoryFile("export", data.data(), data.size());
            // Inherited page attributes must sit on the pages themselves
            // before copying, or a copied page loses its resources.
            qpdf_.pushInheritedAttributesToPage();
            pages_ = qpdf_.getAllPages();
        } catch (const std::exception&) {
            throw EvidenceError::invalid(kReopenFailed);
        }
        if (pages_.empty()) throw EvidenceError::invalid(kReopenFailed);
        for (size_t i = 0; i < pages_.size(); ++i)
            pageIndex_[pages_[i].getObjGen()] = i;
        readNamedDestinations();
        readOutline();
        readLinks();
        measureStreams();
    }

    size_t pageCount() const { return pages_.size(); }

    // The serialised document made of the pages [begin, end).
    std::string part(size_t begin, size_t end);

    // A lower bound of part(begin, end).size(): the stream data its pages
    // reach, which the writer copies byte for byte.
    class StreamBound {
    public:
        StreamBound(const OpenedPDF& pdf, size_t begin)
            : pdf_(pdf), counted_(pdf.streamBytes_.size(), false), end_(begin) {}
        // Adds the next page; returns the bound of [begin, end).
        int64_t extend() {
            for (size_t stream : pdf_.pageStreams_[end_]) {
                if (counted_[stream]) continue;
                counted_[stream] = true;
                bytes_ += pdf_.streamBytes_[stream];
            }
            ++end_;
            return bytes_;
        }
        size_t end() const { return end_; }

    private:
        const OpenedPDF& pdf_;
        std::vector<bool> counted_;
        size_t end_;
        int64_t bytes_ = 0;
    };

private:
    std::optional<Target> resolve(QPDFObjectHandle dest, int depth = 0);
    void readNamedDestinations();
    void readNameTree(QPDFObjectHandle node, std::set<QPDFObjGen>& seen, int depth);
    void readOutline();
    void readOutlineLevel(QPDFObjectHandle first, std::vector<OutlineEntry>& into,
                          std::set<QPDFObjGen>& seen, int depth);
    void readLinks();
    void measureStreams();

    QPDF qpdf_;
    std::vector<QPDFObjectHandle> pages_;
    std::map<QPDFObjGen, size_t> pageIndex_;
    std::map<std::string, QPDFObjectHandle> namedDestinations_;
    std::vector<OutlineEntry> outline_;
    std::vector<std::vector<Link>> links_;          // per page
    std::vector<std::vector<size_t>> pageStreams_;  // per page, indices into streamBytes_
    std::vector<int64_t> streamBytes_;
};

constexpr int kMaxDepth = 64;

std::optional<Target> OpenedPDF::resolve(QPDFObjectHandle dest, int depth) {
    if (depth > 2) return std::nullopt;
    if (dest.isString() || dest.isName()) {
        std::string name = dest.isString() ? dest.getStringValue() : dest.getName().substr(1);
        auto found = namedDestinations_.find(name);
        if (found == namedDestinations_.end()) return std::nullopt;
        auto target = resolve(found->second, depth + 1);
        if (target) target->name = name;
        return target;
    }
    if (dest.isDictionary()) return resolve(dest.getKey("/D"), depth + 1);
    if (!dest.isArray() || dest.getArrayNItems() < 1) return std::nullopt;
    QPDFObjectHandle page = dest.getArrayItem(0);
    if (!page.isIndirect()) return std::nullopt;
    auto index = pageIndex_.find(page.getObjGen());
    if (index == pageIndex_.end()) return std::nullopt;
    Target target;
    target.page = index->second;
    for (int i = 1; i < dest.getArrayNItems(); ++i) {
        target.view += dest.getArrayItem(i).unparseResolved() + " ";
    }
    return target;
}

void OpenedPDF::readNameTree(QPDFObjectHandle node, std::set<QPDFObjGen>& seen, int depth) {
    if (!node.isDictionary() || depth > kMaxDepth) return;
    if (node.isIndirect() && !seen.insert(node.getObjGen()).second) return;
    QPDFObjectHandle names = node.getKey("/Names");
    if (names.isArray()) {
        for (int i = 0; i + 1 < names.getArrayNItems(); i += 2) {
            QPDFObjectHandle key = names.getArrayItem(i);
            if (key.isString())
                namedDestinations_.emplace(key.getStringValue(), names.getArrayItem(i + 1));
        }
    }
    QPDFObjectHandle kids = node.getKey("/Kids");
    if (kids.isArray()) {
        for (auto& kid : kids.getArrayAsVector())
            readNameTree(kid, seen, depth + 1);
    }
}

void OpenedPDF::readNamedDestinations() {
    QPDFObjectHandle root = qpdf_.getRoot();
    std::set<QPDFObjGen> seen;
    readNameTree(root.getKey("/Names").getKey("/Dests"), seen, 0);
    // The older form: a dictionary keyed by names.
    QPDFObjectHandle dests = root.getKey("/Dests");
    if (dests.isDictionary()) {
        for (auto& [key, value] : dests.getDictAsMap())
            namedDestinations_.emplace(key.substr(1), value);
    }
}

QPDFObjectHandle destinationOf(QPDFObjectHandle holder, bool& viaAction) {
    viaAction = false;
    if (holder.hasKey("/Dest")) return holder.getKey("/Dest");
    QPDFObjectHandle action = holder.getKey("/A");
    if (action.isDictionary() && action.getKey("/S").isNameAndEquals("/GoTo")) {
        viaAction = true;
        return action.getKey("/D");
    }
    return QPDFObjectHandle::newNull();
}

void OpenedPDF::readOutlineLevel(QPDFObjectHandle item, std::vector<OutlineEntry>& into,
                                 std::set<QPDFObjGen>& seen, int depth) {
    if (depth > kMaxDepth) return;
    while (item.isDictionary() && item.isIndirect() && seen.insert(item.getObjGen()).second) {
        OutlineEntry entry;
        QPDFObjectHandle title = item.getKey("/Title");
        if (title.isString()) entry.title = title.getStringValue();
        for (const char* key : {"/F", "/C"}) {
            if (item.hasKey(key))
                entry.extras += std::string(key) + " " + item.getKey(key).unparseResolved() + " ";
        }
        QPDFObjectHandle count = item.getKey("/Count");
        entry.open = count.isInteger() && count.getIntValue() > 0;
        bool viaAction = false;
        entry.target = resolve(destinationOf(item, viaAction));
        readOutlineLevel(item.getKey("/First"), entry.kids, seen, depth + 1);
        into.push_back(std::move(entry));
        item = item.getKey("/Next");
    }
}

void OpenedPDF::readOutline() {
    std::set<QPDFObjGen> seen;
    readOutlineLevel(qpdf_.getRoot().getKey("/Outlines").getKey("/First"), outline_, seen, 0);
}

void OpenedPDF::readLinks() {
    links_.resize(pages_.size());
    for (size_t i = 0; i < pages_.size(); ++i) {
        QPDFObjectHandle annots = pages_[i].getKey("/Annots");
        if (!annots.isArray()) continue;
        for (int position = 0; position < annots.getArrayNItems(); ++position) {
            QPDFObjectHandle annot = annots.getArrayItem(position);
            if (!annot.isDictionary() || !annot.getKey("/Subtype").isNameAndEquals("/Link"))
                continue;
            bool viaAction = false;
            auto target = resolve(destinationOf(annot, viaAction), 0);
            if (!target) continue;
            links_[i].push_back({static_cast<size_t>(position), *target, viaAction});
            annot.removeKey(viaAction ? "/A" : "/Dest");
        }
    }
}

// Walks what copying a page takes along: everything it reaches except its
// parent and other pages, which the copy does not cross into either.
void OpenedPDF::measureStreams() {
    std::map<QPDFObjGen, size_t> streamIndex;
    pageStreams_.resize(pages_.size());
    for (size_t i = 0; i < pages_.size(); ++i) {
        std::set<QPDFObjGen> seen{pages_[i].getObjGen()};
        std::vector<QPDFObjectHandle> pending;
        for (auto& [key, value] : pages_[i].getDictAsMap()) {
            if (key != "/Parent") pending.push_back(value);
        }
        while (!pending.empty()) {
            QPDFObjectHandle object = pending.back();
            pending.pop_back();
            if (object.isIndirect()) {
                if (!seen.insert(object.getObjGen()).second) continue;
                if (object.isPageObject() || object.isPagesObject()) continue;
            }
            if (object.isStream()) {
                auto [found, added] = streamIndex.emplace(object.getObjGen(), streamBytes_.size());
                if (added) {
                    Pl_Discard discard;
                    Pl_Count count("stream size", &discard);
                    object.pipeStreamData(&count, 0, qpdf_dl_none, true);
                    streamBytes_.push_back(count.getCount());
                }
                pageStreams_[i].push_back(found->second);
                pending.push_back(object.getDict());
            } else if (object.isDictionary()) {
                for (auto& [key, value] : object.getDictAsMap())
                    pending.push_back(value);
            } else if (object.isArray()) {
                for (auto& value : object.getArrayAsVector())
                    pending.push_back(value);
            }
        }
    }
}

QPDFObjectHandle destinationArray(QPDFObjectHandle page, const std::string& view) {
    QPDFObjectHandle array = QPDFObjectHandle::parse("[" + view + "]");
    array.insertItem(0, page);
    return array;
}

// Outline items of one part: entries whose page is in the part, pointing at
// the copied page; an entry of another part hands its kept children up.
struct NewItem {
    QPDFObjectHandle item;
    bool open = false;
    std::vector<NewItem> kids;
};

int visibleCount(const std::vector<NewItem>& items) {
    int count = 0;
    for (const auto& item : items)
        count += 1 + (item.open ? visibleCount(item.kids) : 0);
    return count;
}

void linkLevel(QPDF& out, std::vector<NewItem>& items, QPDFObjectHandle parent) {
    for (size_t i = 0; i < items.size(); ++i) {
        QPDFObjectHandle item = items[i].item;
        item.replaceKey("/Parent", parent);
        if (i > 0) item.replaceKey("/Prev", items[i - 1].item);
        if (i + 1 < items.size()) item.replaceKey("/Next", items[i + 1].item);
        if (!items[i].kids.empty()) {
            linkLevel(out, items[i].kids, item);
            int count = visibleCount(items[i].kids);
            item.replaceKey("/Count", QPDFObjectHandle::newInteger(items[i].open ? count : -count));
        }
    }
    if (!items.empty()) {
        parent.replaceKey("/First", items.front().item);
        parent.replaceKey("/Last", items.back().item);
    }
}

void buildOutline(QPDF& out, const std::vector<OutlineEntry>& entries, size_t begin,
                  const std::vector<QPDFObjectHandle>& copied, std::vector<NewItem>& into) {
    for (const auto& entry : entries) {
        if (entry.target && entry.target->page >= begin &&
            entry.target->page - begin < copied.size()) {
            QPDFObjectHandle item = QPDFObjectHandle::parse("<<" + entry.extras + ">>");
            item.replaceKey("/Title", QPDFObjectHandle::newString(entry.title));
            item.replaceKey(
                "/Dest", destinationArray(copied[entry.target->page - begin], entry.target->view));
            NewItem made{out.makeIndirectObject(item), entry.open, {}};
            buildOutline(out, entry.kids, begin, copied, made.kids);
            into.push_back(std::move(made));
        } else {
            buildOutline(out, entry.kids, begin, copied, into);
        }
    }
}

std::string OpenedPDF::part(size_t begin, size_t end) {
    auto out = QPDF::create();
    out->setSuppressWarnings(true);
    out->emptyPDF();
    QPDFPageDocumentHelper pageHelper(*out);
    std::vector<QPDFObjectHandle> copied;
    for (size_t i = begin; i < end; ++i) {
        pageHelper.addPage(pages_[i], false);
        copied.push_back(out->getAllPages().back());
    }

    // Links to a page of this part lead to its copy; links to another part
    // are removed, since a link that does nothing only confuses the reader.
    std::map<std::string, QPDFObjectHandle> dests;
    for (size_t i = begin; i < end; ++i) {
        if (links_[i].empty()) continue;
        QPDFObjectHandle page = copied[i - begin];
        std::vector<QPDFObjectHandle> annots = page.getKey("/Annots").getArrayAsVector();
        std::vector<bool> keep(annots.size(), true);
        for (const Link& link : links_[i]) {
            if (link.position >= annots.size()) continue;
            const Target& target = link.target;
            if (target.page < begin || target.page >= end) {
                keep[link.position] = false;
                continue;
            }
            QPDFObjectHandle array = destinationArray(copied[target.page - begin], target.view);
            QPDFObjectHandle dest = array;
            if (target.name) {
                dests[*target.name] = array;
                dest = QPDFObjectHandle::newString(*target.name);
            }
            QPDFObjectHandle annot = annots[link.position];
            if (link.viaAction) {
                QPDFObjectHandle action = QPDFObjectHandle::newDictionary();
                action.replaceKey("/S", QPDFObjectHandle::newName("/GoTo"));
                action.replaceKey("/D", dest);
                annot.replaceKey("/A", action);
            } else {
                annot.replaceKey("/Dest", dest);
            }
        }
        QPDFObjectHandle kept = QPDFObjectHandle::newArray();
        for (size_t k = 0; k < annots.size(); ++k) {
            if (keep[k]) kept.appendItem(annots[k]);
        }
        if (kept.getArrayNItems() > 0) {
            page.replaceKey("/Annots", kept);
        } else {
            page.removeKey("/Annots");
        }
    }

    QPDFObjectHandle root = out->getRoot();
    if (!dests.empty()) {
        // One leaf holds every name, in byte order as name trees require.
        QPDFObjectHandle names = QPDFObjectHandle::newArray();
        for (auto& [name, array] : dests) {
            names.appendItem(QPDFObjectHandle::newString(name));
            names.appendItem(array);
        }
        QPDFObjectHandle tree = QPDFObjectHandle::newDictionary();
        tree.replaceKey("/Names", names);
        QPDFObjectHandle namesDict = QPDFObjectHandle::newDictionary();
        namesDict.replaceKey("/Dests", out->makeIndirectObject(tree));
        root.replaceKey("/Names", namesDict);
    }

    std::vector<NewItem> items;
    buildOutline(*out, outline_, begin, copied, items);
    if (!items.empty()) {
        QPDFObjectHandle outlines =
            out->makeIndirectObject(QPDFObjectHandle::parse("<< /Type /Outlines >>"));
        linkLevel(*out, items, outlines);
        outlines.replaceKey("/Count", QPDFObjectHandle::newInteger(visibleCount(items)));
        root.replaceKey("/Outlines", outlines);
    }

    // The pages are numbered on as printed ("Page 38 of 120"), so a viewer's
    // page box shows 38 for the first page of a later part, not 1.
    root.replaceKey("/PageLabels", QPDFObjectHandle::parse("<< /Nums [0 << /S /D /St " +
                                                           std::to_string(begin + 1) + " >>] >>"));

    QPDFObjectHandle info = QPDFObjectHandle::newDictionary();
    info.replaceKey("/Creator", QPDFObjectHandle::newString("Kinfolio"));
    out->getTrailer().replaceKey("/Info", out->makeIndirectObject(info));

    QPDFWriter writer(*out);
    writer.setOutputMemory();
    // Streams are written byte for byte: no time spent recompressing, and
    // their sizes bound the file's size from below.
    writer.setCompressStreams(false);
    writer.setDecodeLevel(qpdf_dl_none);
    writer.setDeterministicID(true);
    writer.setMinimumPDFVersion(qpdf_.getPDFVersion());
    writer.write();
    auto buffer = writer.getBufferSharedPointer();
    return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
}

// Measured parts of one search, keeping the bytes of the largest fitting one.
struct Probe {
    size_t end = 0;
    std::string bytes;
};

// The part greedy packing would make from `start`: its end is the first page
// count whose next candidate is over the limit. Part sizes grow with the page
// count, so that end is found by measuring only near the boundary: pages whose
// stream data alone is over the limit are never serialised, and the first
// guess is the last page under the stream bound.
std::string nextPart(OpenedPDF& pdf, size_t start, int64_t maxBytes, size_t& end) {
    size_t n = pdf.pageCount();
    std::vector<int64_t> bound{0};  // bound[k]: pages [start, start + k)
    OpenedPDF::StreamBound streams(pdf, start);
    size_t hi = n + 1;  // smallest end known to be over the limit
    while (streams.end() < n) {
        bound.push_back(streams.extend());
        if (streams.end() > start + 1 && bound.back() > maxBytes) {
            hi = streams.end();
            break;
        }
    }
    size_t lo = start + 1;  // largest end known to fit (one page always does)
    Probe best;
    int64_t overhead = 0;  // largest measured size over the stream bound
    int probes = 0;
    while (hi - lo > 1) {
        size_t probe = lo + (hi - lo) / 2;
        if (probes < 3) {
            probe = lo + 1;
            for (size_t e = hi - 1; e > lo; --e) {
                if (bound[e - start] + overhead <= maxBytes) {
                    probe = e;
                    break;
                }
            }
        }
        ++probes;
        std::string bytes = pdf.part(start, probe);
        overhead = std::max(overhead, static_cast<int64_t>(bytes.size()) - bound[probe - start]);
        if (static_cast<int64_t>(bytes.size()) <= maxBytes) {
            lo = probe;
            best = {probe, std::move(bytes)};
        } else {
            hi = probe;
        }
    }
    end = lo;
    if (best.end != lo) best = {lo, pdf.part(start, lo)};
    return std::move(best.bytes);
}

template <typename NextPart>
std::vector<std::string> pack(const std::string& data, int64_t maxBytes, NextPart nextPart,
                              std::vector<size_t>* ends = nullptr) {
    if (static_cast<int64_t>(data.size()) <= maxBytes) return {data};
    try {
        OpenedPDF pdf(data);
        std::vector<std::string> parts;
        for (size_t start = 0; start < pdf.pageCount();) {
            size_t end = start + 1;
            parts.push_back(nextPart(pdf, start, maxBytes, end));
            if (ends) ends->push_back(end);
            start = end;
        }
        return parts;
    } catch (const EvidenceError&) {
        throw;
    } catch (const std::exception&) {
        throw EvidenceError::invalid(kReopenFailed);
    }
}

}  // namespace

std::vector<std::string> split(const std::string& data, int64_t maxBytes,
                               std::vector<size_t>* ends) {
    return pack(data, maxBytes, nextPart, ends);
}

// The plain greedy packing: every part grows one page at a time and each
// candidate is serialised to measure it. split() must return exactly these
// parts; this slow form lives here, beside the reader it shares, only so that
// the split test can prove that, and is declared there alone.
std::vector<std::string> splitOnePageAtATime(const std::string& data, int64_t maxBytes) {
    return pack(data, maxBytes, [](OpenedPDF& pdf, size_t start, int64_t limit, size_t& end) {
        std::string best = pdf.part(start, start + 1);
        end = start + 1;
        while (end < pdf.pageCount()) {
            std::string candidate = pdf.part(start, end + 1);
            if (static_cast<int64_t>(candidate.size()) > limit) break;
            best = std::move(candidate);
            ++end;
        }
        return best;
    });
}

}  // namespace kinfolio::PDFExporter
