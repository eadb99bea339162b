#include "media_module/media_module.h"

#include <dlfcn.h>
#include <glib.h>
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <thread>
#include <unordered_map>
#include <vips/vips8>

#include "model/files.h"
#include "model/json.h"
#include "model/text.h"

namespace kinfolio::MediaModule {

using namespace Scanner;

namespace {

// Screenshots are a few megapixels; a scrolling capture of a long chat
// reaches some 40. Recognition holds the grey image several times over
// (Tesseract copies and thresholds it) on every worker at once, so the limit
// is far below the one for pictures.
constexpr int64_t kMaxRecognitionPixels = 50'000'000;

// Bumped when the settings below change what is recognised, so answers kept
// on disk by an older build are made again.
constexpr int kCacheFormat = 1;

// Tesseract runs its neural network on every core through OpenMP. With one
// image per core already being read, that only adds contention: six to seven
// times slower on a two-core machine. OMP_THREAD_LIMIT cannot help from here,
// since the OpenMP runtime reads its environment when it is loaded, before
// any code of ours runs; zero active levels makes every parallel region run
// on the thread that enters it. The runtime arrives with Tesseract, so it is
// looked up rather than linked.
void keepOpenMPOnThisThread() {
    if (std::getenv("OMP_THREAD_LIMIT") || std::getenv("OMP_MAX_ACTIVE_LEVELS")) return;
    using SetLevels = void (*)(int);
    static const auto setLevels =
        reinterpret_cast<SetLevels>(::dlsym(RTLD_DEFAULT, "omp_set_max_active_levels"));
    if (setLevels) setLevels(0);
}

// One recogniser per thread: an engine is not safe to share and takes some
// 0.2 s to load, so each worker keeps its own for as long as it lives.
tesseract::TessBaseAPI* threadEngine() {
    struct Slot {
        std::unique_ptr<tesseract::TessBaseAPI> api;
        bool failed = false;
    };
    thread_local Slot slot;
    if (!slot.api && !slot.failed) {
        keepOpenMPOnThisThread();
        auto api = std::make_unique<tesseract::TessBaseAPI>();
        if (api->Init(nullptr, recognitionLanguages().c_str(), tesseract::OEM_LSTM_ONLY) != 0) {
            slot.failed = true;  // no language data: trying again per image only costs time
        } else {
            // Chat screenshots put bubbles left and right; the full layout
            // analysis keeps each bubble's lines together.
            api->SetPageSegMode(tesseract::PSM_AUTO);
            // Its notes ("Estimating resolution as …") are for developers.
            api->SetVariable("debug_file", "/dev/null");
            slot.api = std::move(api);
        }
    }
    return slot.api.get();
}

std::string engineTag() {
    return std::string("tesseract ") + tesseract::TessBaseAPI::Version() + " " +
           recognitionLanguages() + " " + std::to_string(kCacheFormat);
}

struct GreyImage {
    std::unique_ptr<void, decltype(&g_free)> pixels{nullptr, g_free};
    int width = 0, height = 0;
};

// 8-bit grey, upright as the EXIF orientation says, transparency on white
// (a transparent PNG's text would otherwise sit on black). Grey is all the
// recogniser uses and takes a third of the memory of colour.
std::optional<GreyImage> decode(std::string_view bytes) {
    try {
        auto header = vips::VImage::new_from_buffer(
            bytes.data(), bytes.size(), "",
            vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        if (int64_t{header.width()} * header.height() > kMaxRecognitionPixels) return std::nullopt;
        // Random access: turning the image may read it out of order.
        vips::VImage image = vips::VImage::new_from_buffer(bytes.data(), bytes.size(), "");
        image = image.autorot().colourspace(VIPS_INTERPRETATION_B_W);
        if (image.has_alpha())
            image = image.flatten(vips::VImage::option()->set("background", std::vector{255.0}));
        if (image.bands() > 1) image = image.extract_band(0);
        if (image.format() != VIPS_FORMAT_UCHAR) image = image.cast(VIPS_FORMAT_UCHAR);
        GreyImage grey;
        size_t size = 0;
        grey.pixels.reset(image.write_to_memory(&size));
        grey.width = image.width();
        grey.height = image.height();
        if (!grey.pixels || size != static_cast<size_t>(grey.width) * grey.height)
            return std::nullopt;
        return grey;
    } catch (const vips::VError&) {
        vips_error_clear();  // libvips keeps every message until cleared
        return std::nullopt;
    }
}

double fraction(double part, double whole) {
    return std::clamp(part / whole, 0.0, 1.0);
}

std::vector<TextBox> readLines(tesseract::TessBaseAPI& api, int width, int height) {
    std::vector<TextBox> boxes;
    std::unique_ptr<tesseract::ResultIterator> it(api.GetIterator());
    if (!it) return boxes;
    const auto level = tesseract::RIL_TEXTLINE;
    do {
        if (it->Empty(level)) continue;
        std::unique_ptr<char[]> utf8(it->GetUTF8Text(level));
        if (!utf8) continue;
        std::string text = utf8.get();
        // Tesseract ends every line with "\n" and a paragraph with another;
        // they are its layout, not text that was seen.
        while (!text.empty() && text.back() == '\n')
            text.pop_back();
        if (text.empty()) continue;
        if (!isValidUtf8(text)) text = repairUtf8(text);
        int left = 0, top = 0, right = 0, bottom = 0;
        if (!it->BoundingBox(level, &left, &top, &right, &bottom)) continue;
        // Tesseract counts pixels from the top-left corner; boxes are kept
        // from the lower-left, y growing upward.
        TextBox box;
        box.text = std::move(text);
        box.x = fraction(left, width);
        box.y = fraction(height - bottom, height);
        box.width = fraction(right - left, width);
        box.height = fraction(bottom - top, height);
        boxes.push_back(std::move(box));
    } while (it->Next(level));
    return boxes;
}

struct Reading {
    std::vector<TextBox> boxes;
    // The answer belongs to the file's content (read, or undecodable), not
    // to a passing failure such as a missing file or missing language data,
    // and may be kept on disk.
    bool lasting = false;
};

Reading recognise(const std::string& path) {
    std::optional<GreyImage> image;
    {
        auto file = MappedFile::open(path);
        if (!file) return {};
        image = decode(file->bytes());
    }
    tesseract::TessBaseAPI* api = threadEngine();
    if (!api) return {};
    if (!image) return {{}, true};
    api->SetImage(static_cast<const unsigned char*>(image->pixels.get()), image->width,
                  image->height, 1, image->width);
    Reading reading;
    if (api->Recognize(nullptr) == 0) {
        reading.boxes = readLines(*api, image->width, image->height);
        reading.lasting = true;
    }
    api->Clear();  // frees the page; the loaded models stay
    return reading;
}

// ---- the answers kept on disk ----

std::optional<std::string> cachePath(const std::string& fileID) {
    if (!isCacheName(fileID)) return std::nullopt;
    auto folder = cacheFolder("text");
    if (!folder) return std::nullopt;
    return *folder + "/" + fileID + ".json";
}

// None for a missing, damaged or outdated entry, which is then made again.
std::optional<std::vector<TextBox>> readCached(const std::string& path) {
    auto file = MappedFile::open(path);
    if (!file) return std::nullopt;
    Json json = Json::parse(file->bytes(), nullptr, false);
    if (!json.is_object()) return std::nullopt;
    auto engine = json.find("engine");
    if (engine == json.end() || !engine->is_string() || *engine != engineTag()) return std::nullopt;
    auto list = json.find("boxes");
    if (list == json.end() || !list->is_array()) return std::nullopt;
    std::vector<TextBox> boxes;
    for (const auto& item : *list) {
        if (!item.is_object()) return std::nullopt;
        auto text = item.find("text");
        if (text == item.end() || !text->is_string()) return std::nullopt;
        TextBox box;
        box.text = text->get<std::string>();
        const std::pair<const char*, double*> fields[] = {
            {"x", &box.x}, {"y", &box.y}, {"width", &box.width}, {"height", &box.height}};
        for (auto [name, field] : fields) {
            auto value = item.find(name);
            if (value == item.end() || !value->is_number()) return std::nullopt;
            *field = value->get<double>();
        }
        boxes.push_back(std::move(box));
    }
    return boxes;
}

void writeCached(const std::string& path, const std::vector<TextBox>& boxes) {
    Json list = Json::array();
    for (const auto& b : boxes)
        list.push_back(
            {{"text", b.text}, {"x", b.x}, {"y", b.y}, {"width", b.width}, {"height", b.height}});
    Json json = {{"engine", engineTag()}, {"boxes", std::move(list)}};
    try {
        writeFileAtomically(path, json.dump());
    } catch (const std::exception&) {
        // A full or read-only disk costs a second recognition, nothing more.
    }
}

// ---- the answers kept in this process ----

struct TextCache {
    std::mutex lock;  // never held while recognising
    std::unordered_map<std::string, std::vector<TextBox>> boxes;
};

TextCache& textCache() {
    static TextCache cache;
    return cache;
}

std::optional<std::vector<TextBox>> remembered(const std::string& fileID) {
    TextCache& cache = textCache();
    std::lock_guard lock(cache.lock);
    auto it = cache.boxes.find(fileID);
    if (it == cache.boxes.end()) return std::nullopt;
    return it->second;
}

void remember(const std::string& fileID, const std::vector<TextBox>& boxes) {
    TextCache& cache = textCache();
    std::lock_guard lock(cache.lock);
    cache.boxes[fileID] = boxes;  // two threads may read one file; both wrote the same
}

}  // namespace

std::string recognitionLanguages() {
    // Other languages only when named ("eng+tha"): the names of installed
    // packs, letters and "_" joined by "+"; anything else is ignored.
    if (const char* named = std::getenv("KINFOLIO_TEXT_LANGUAGES")) {
        std::string_view list(named);
        bool plain = !list.empty() && list.front() != '+' && list.back() != '+' &&
                     std::all_of(list.begin(), list.end(), [](char c) {
                         return (c >= 'a' && c <= 'z') || c == '_' || c == '+';
                     });
        if (plain) return std::string(list);
    }
    // By default English alone. Loading every installed pack next to it reads other
    // scripts too, but each recogniser then takes 1-2 s instead of 0.1-0.2 s
    // to load and some 250 MB more memory, an English screenshot takes 5-40 %
    // longer and a Chinese or Thai one about five times as long; and Chinese
    // lines come back with a space between the characters, where a hidden
    // word would not be found anyway.
    return "eng";
}

std::vector<TextBox> recognizeText(const std::string& path, const std::string& fileID) {
    if (auto known = remembered(fileID)) return *known;
    startImageLibraries();
    auto diskPath = cachePath(fileID);
    if (diskPath) {
        if (auto cached = readCached(*diskPath)) {
            remember(fileID, *cached);
            return *cached;
        }
    }
    Reading reading = recognise(path);
    if (diskPath && reading.lasting) writeCached(*diskPath, reading.boxes);
    remember(fileID, reading.boxes);
    return reading.boxes;
}

void recognizeAll(std::vector<RecognitionJob>& jobs,
                  const std::function<void(size_t read, size_t total)>& progress,
                  unsigned workers) {
    const size_t total = jobs.size();
    if (total == 0) return;
    if (workers == 0) workers = std::max(1u, std::thread::hardware_concurrency());
    const size_t threads = std::min<size_t>(workers, total);

    std::atomic<size_t> next{0};
    std::mutex doneLock;
    std::vector<bool> done(total, false);
    size_t reported = 0;
    std::exception_ptr failure;

    auto work = [&] {
        try {
            for (size_t i = next++; i < total; i = next++) {
                std::vector<TextBox> boxes = recognizeText(jobs[i].path, jobs[i].fileID);
                std::lock_guard lock(doneLock);
                jobs[i].boxes = std::move(boxes);
                done[i] = true;
                // Jobs finish out of order; whoever finishes the next one due
                // reports it and the finished ones behind it, so the counts
                // arrive in order and one at a time.
                while (reported < total && done[reported]) {
                    ++reported;
                    if (progress) progress(reported, total);
                }
            }
        } catch (...) {  // from the progress callback: stop everyone, tell the caller
            std::lock_guard lock(doneLock);
            if (!failure) failure = std::current_exception();
            next = total;
        }
    };

    std::vector<std::thread> pool;
    for (size_t t = 1; t < threads; ++t) {
        try {
            pool.emplace_back([&] {
                work();
                vips_thread_shutdown();  // libvips keeps buffers per thread
            });
        } catch (const std::system_error&) {
            break;  // fewer threads than asked for still finish the work
        }
    }
    work();
    for (auto& thread : pool)
        thread.join();
    if (failure) std::rethrow_exception(failure);
}

void warmUpTextRecognition() {
    startImageLibraries();
    tesseract::TessBaseAPI* api = threadEngine();
    if (!api) return;
    std::vector<unsigned char> blank(64 * 64, 255);
    api->SetImage(blank.data(), 64, 64, 1, 64);
    api->Recognize(nullptr);
    api->Clear();
}

void clearTextCache() {
    TextCache& cache = textCache();
    std::lock_guard lock(cache.lock);
    cache.boxes.clear();
}

}  // namespace kinfolio::MediaModule
