#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "model/shared_text.h"

namespace kinfolio {

// A point in time: seconds since 2001-01-01 00:00:00 UTC. Written times are
// kept as wall-clock readings in a zero-offset zone, so the digits a source
// wrote come back unchanged when formatted.
using Instant = double;

// Seconds between the Unix epoch and 2001-01-01 00:00:00 UTC.
inline constexpr double kReferenceEpochOffset = 978307200.0;

inline Instant instantFromUnix(double unixSeconds) {
    return unixSeconds - kReferenceEpochOffset;
}
inline double unixFromInstant(Instant t) {
    return t + kReferenceEpochOffset;
}

enum class ItemKind : uint8_t {
    message,
    call,
    photo,
    screenshot,
    video,
    document,
    email,  // keep last: kItemKindCount counts up to it
};
inline constexpr size_t kItemKindCount = static_cast<size_t>(ItemKind::email) + 1;

std::string_view rawValue(ItemKind kind);
std::optional<ItemKind> itemKindFromRaw(std::string_view raw);

// One recognised text line of a screenshot; fractions of the image, origin
// at its lower-left corner, y growing upward.
struct TextBox {
    std::string text;
    double x = 0, y = 0, width = 0, height = 0;
    bool operator==(const TextBox&) const = default;
};

// The fields few items have: an attachment, a screenshot's text, a call's
// length, an e-mail's header lines.
struct EvidenceDetails {
    std::optional<std::string> imageURL;  // absolute file path
    std::optional<std::string> attachmentName;
    std::optional<std::string> attachmentID;
    std::vector<TextBox> textBoxes;
    std::optional<double> duration;
    std::string heading;

    bool operator==(const EvidenceDetails&) const = default;
};

// One dated item of the document.
struct Evidence {
    // Kept small and without padding: a large chat holds a million of these,
    // so the rarely used fields sit behind one pointer that most leave empty.
    ItemKind kind = ItemKind::message;
    bool dateIsEstimated = false;
    Instant date = 0;
    SharedText sender;  // a chat's few names, shared by its messages
    std::string text;
    SharedText fileID;  // shared by the items of one file
    int64_t position = 0;

    Evidence() = default;
    Evidence(const Evidence& other);
    Evidence& operator=(const Evidence& other);
    Evidence(Evidence&&) noexcept = default;
    Evidence& operator=(Evidence&&) noexcept = default;
    ~Evidence() = default;

    // An empty shared instance when this item has none, so reading never
    // allocates.
    const EvidenceDetails& details() const {
        static const EvidenceDetails none;
        return details_ ? *details_ : none;
    }
    EvidenceDetails& detailsForWriting();

    // fileID + ":" + position; items of one file and position share it.
    std::string id() const;
    // A chat's system or service line: a message without a sender.
    bool isSystem() const { return kind == ItemKind::message && sender.empty(); }

    // Absent details equal present ones that are all empty.
    bool operator==(const Evidence& other) const;

private:
    std::unique_ptr<EvidenceDetails> details_;
};

// The one error type: its message is a finished sentence for the user.
class EvidenceError : public std::runtime_error {
public:
    explicit EvidenceError(const std::string& message) : std::runtime_error(message) {}
    static EvidenceError invalid(const std::string& message) { return EvidenceError(message); }
};

struct FileRecord {
    std::string path;    // relative to the materials folder, "/"-separated
    std::string sha256;  // 64 lowercase hex digits
    int64_t bytes = 0;
    bool operator==(const FileRecord&) const = default;
};

struct SkippedFile {
    std::string path;
    std::string reason;
    bool operator==(const SkippedFile&) const = default;
};

// The four stable item orders.
void sortByDate(std::vector<Evidence>& items);
void sortByDateAndPosition(std::vector<Evidence>& items);
void sortByDateFileAndPosition(std::vector<Evidence>& items);
void sortByPosition(std::vector<Evidence>& items);

}  // namespace kinfolio
