#include "gui/settings_panel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QSpinBox>
#include <QVBoxLayout>

#include "gui/widgets.h"
#include "model/calendar.h"

namespace kinfolio::gui {

namespace {

QString dayText(Instant t) {
    return qt(Calendar::format(t, "yyyy-MM-dd"));
}

// A count where 0 means no limit, shown as the word for it.
QSpinBox* countBox(int maximum, const QString& zero, const QString& suffix, QWidget* parent) {
    auto* box = new QSpinBox(parent);
    box->setRange(0, maximum);
    box->setSpecialValueText(zero);
    box->setSuffix(suffix);
    return box;
}

template <typename E, size_t N>
QComboBox* choiceBox(const E (&values)[N], QWidget* parent) {
    auto* box = new QComboBox(parent);
    for (E value : values)
        box->addItem(qt(std::string(displayName(value))), static_cast<int>(value));
    return box;
}

// The form's label doubles as the accessible name, and the help text is
// read after it by a screen reader.
void addRow(QFormLayout* form, const QString& label, QWidget* field, const QString& help = {}) {
    field->setAccessibleName(label);
    if (!help.isEmpty()) {
        field->setToolTip(help);
        field->setAccessibleDescription(help);
    }
    form->addRow(label, field);
}

QFormLayout* section(QVBoxLayout* column, const QString& title) {
    auto* group = new QGroupBox(title);
    auto* form = new QFormLayout(group);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    column->addWidget(group);
    return form;
}

void setLine(QLineEdit* edit, const std::string& value) {
    // Written back only when it differs, so the cursor stays where it is
    // while the user types.
    if (utf8(edit->text()) != value) edit->setText(qt(value));
}

void setChoice(QComboBox* box, int value) {
    int index = box->findData(value);
    if (index >= 0 && box->currentIndex() != index) box->setCurrentIndex(index);
}

}  // namespace

SettingsPanel::SettingsPanel(AppModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(heading("Settings", 1.15, this));
    QVBoxLayout* column = scrollingColumn(outer, "Settings", this);
    QWidget* inner = column->parentWidget();

    QFormLayout* cover = section(column, "Cover");
    title = new QLineEdit(inner);
    applicant = new QLineEdit(inner);
    partner = new QLineEdit(inner);
    reference = new QLineEdit(inner);
    ownerName = new QLineEdit(inner);
    addRow(cover, "Title", title);
    addRow(cover, "Applicant", applicant, "The applicant's name, as on the application.");
    addRow(cover, "Partner / sponsor", partner);
    addRow(cover, "Application number", reference, "Printed on the cover and on every page.");
    addRow(cover, "In chats, you are", ownerName,
           "Your own name as it appears in your chats, so your messages are shown as yours.");

    QFormLayout* include = section(column, "What to include");
    messagesPerMonth = countBox(1000, "All", " a month", inner);
    photosPerMonth = countBox(1000, "All", " a month", inner);
    addRow(include, "Messages", messagesPerMonth,
           "Messages taken from every month of each chat, evenly spread, each with the message "
           "before and after it. All includes every message.");
    addRow(include, "Photos and videos", photosPerMonth,
           "Photos, screenshots and videos taken from every month. All includes every one.");
    limitDates = new QCheckBox("Only include a date range", inner);
    include->addRow(limitDates);
    rangeStart = new QDateEdit(inner);
    rangeEnd = new QDateEdit(inner);
    for (QDateEdit* edit : {rangeStart, rangeEnd}) {
        edit->setCalendarPopup(true);
        edit->setDisplayFormat("d MMM yyyy");
    }
    addRow(include, "From", rangeStart);
    addRow(include, "To", rangeEnd, "The last day is included.");

    QFormLayout* hidden = section(column, "Hidden words");
    hiddenText = new QPlainTextEdit(inner);
    hiddenText->setTabChangesFocus(true);
    hiddenText->setFixedHeight(hiddenText->fontMetrics().lineSpacing() * 5 + 12);
    hiddenText->setAccessibleName("Hidden words");
    hidden->addRow(hiddenText);
    hidden->addRow(quiet(
        "One word or phrase per line. In chats, emails, names and file names it is replaced with "
        "[REDACTED]. In screenshots, lines where it is recognised are blacked out, but "
        "recognition can miss text. Photos, video frames and pages of PDF documents are not "
        "changed: check them yourself.",
        inner));
    hiddenText->setAccessibleDescription(
        "One word or phrase per line. Replaced with [REDACTED] in chats, emails, names and file "
        "names, and blacked out in screenshots where it is recognised.");

    QFormLayout* document = section(column, "Document");
    constexpr PaperSize papers[] = {PaperSize::a4, PaperSize::letter};
    constexpr Arrangement arrangements[] = {Arrangement::byDate, Arrangement::byType};
    paper = choiceBox(papers, inner);
    arrangement = choiceBox(arrangements, inner);
    maxFileMB = countBox(2000, "No limit", " MB", inner);
    addRow(document, "Paper", paper);
    addRow(document, "Arrangement", arrangement,
           "Timeline: everything in date order. Type of evidence: communication, photos, travel, "
           "finance, home and certificates, each in date order.");
    addRow(document, "Largest file", maxFileMB,
           "When the application form limits the size of an upload, a larger PDF is split into "
           "numbered parts.");

    QFormLayout* dates = section(column, "Reading dates");
    constexpr DateOrder orders[] = {DateOrder::automatic, DateOrder::dayFirst,
                                    DateOrder::monthFirst};
    dateOrder = choiceBox(orders, inner);
    timeZone = new QComboBox(inner);
    for (const std::string& zone : Calendar::commonTimeZones())
        timeZone->addItem(qt(zone), qt(zone));
    addRow(dates, "Date order", dateOrder,
           "How dates such as 03/04/2025 in chats are read. Automatic lets each chat decide. "
           "Changing it reads the folder again.");
    addRow(dates, "Time zone", timeZone,
           "The zone in which Messenger and Instagram times are shown. Changing it reads the "
           "folder again.");
    column->addStretch();

    // Every edit becomes a change of the model's settings.
    auto edit = [this](auto change) {
        if (!showing_) model_.updateSettings(change);
    };
    auto text = [&](QLineEdit* field, std::string Settings::*member) {
        connect(field, &QLineEdit::textEdited, this, [edit, member](const QString& value) {
            edit([&](Settings& s) { s.*member = utf8(value); });
        });
    };
    text(title, &Settings::title);
    text(applicant, &Settings::applicant);
    text(partner, &Settings::partner);
    text(reference, &Settings::reference);
    text(ownerName, &Settings::ownerName);
    auto number = [&](QSpinBox* field, int Settings::*member) {
        connect(field, &QSpinBox::valueChanged, this,
                [edit, member](int value) { edit([&](Settings& s) { s.*member = value; }); });
    };
    number(messagesPerMonth, &Settings::messagesPerMonth);
    number(photosPerMonth, &Settings::photosPerMonth);
    number(maxFileMB, &Settings::maxFileMB);
    connect(limitDates, &QCheckBox::toggled, this,
            [edit](bool on) { edit([&](Settings& s) { s.limitDates = on; }); });
    auto day = [&](QDateEdit* field, const char* key) {
        connect(field, &QDateEdit::dateChanged, this, [edit, key](QDate date) {
            edit([&](Settings& s) { setField(s, key, utf8(date.toString(Qt::ISODate))); });
        });
    };
    day(rangeStart, "rangeStart");
    day(rangeEnd, "rangeEnd");
    connect(hiddenText, &QPlainTextEdit::textChanged, this, [this, edit] {
        edit([&](Settings& s) { s.hiddenText = utf8(hiddenText->toPlainText()); });
    });
    auto choice = [&](QComboBox* field, auto member) {
        connect(field, &QComboBox::currentIndexChanged, this, [edit, field, member](int) {
            int value = field->currentData().toInt();
            edit([&](Settings& s) {
                s.*member = static_cast<std::remove_reference_t<decltype(s.*member)>>(value);
            });
        });
    };
    choice(paper, &Settings::paper);
    choice(arrangement, &Settings::arrangement);
    choice(dateOrder, &Settings::dateOrder);
    connect(timeZone, &QComboBox::currentIndexChanged, this, [this, edit](int) {
        std::string zone = utf8(timeZone->currentData().toString());
        edit([&](Settings& s) { s.timeZoneID = zone; });
    });
}

void SettingsPanel::show(const Settings& s) {
    showing_ = true;
    setLine(title, s.title);
    setLine(applicant, s.applicant);
    setLine(partner, s.partner);
    setLine(reference, s.reference);
    setLine(ownerName, s.ownerName);
    for (auto [box, value] :
         {std::pair{messagesPerMonth, s.messagesPerMonth},
          std::pair{photosPerMonth, s.photosPerMonth}, std::pair{maxFileMB, s.maxFileMB}})
        if (box->value() != value) box->setValue(value);
    if (limitDates->isChecked() != s.limitDates) limitDates->setChecked(s.limitDates);
    rangeStart->setEnabled(s.limitDates);
    rangeEnd->setEnabled(s.limitDates);
    for (auto [edit, value] :
         {std::pair{rangeStart, s.rangeStart}, std::pair{rangeEnd, s.rangeEnd}})
        if (QDate day = QDate::fromString(dayText(value), Qt::ISODate); edit->date() != day)
            edit->setDate(day);
    if (utf8(hiddenText->toPlainText()) != s.hiddenText) hiddenText->setPlainText(qt(s.hiddenText));
    setChoice(paper, static_cast<int>(s.paper));
    setChoice(arrangement, static_cast<int>(s.arrangement));
    setChoice(dateOrder, static_cast<int>(s.dateOrder));
    // A zone from another computer's settings, not in the common list, is
    // still shown as chosen.
    if (timeZone->findData(qt(s.timeZoneID)) < 0)
        timeZone->addItem(qt(s.timeZoneID), qt(s.timeZoneID));
    if (int i = timeZone->findData(qt(s.timeZoneID)); timeZone->currentIndex() != i)
        timeZone->setCurrentIndex(i);
    showing_ = false;
}

}  // namespace kinfolio::gui
