#include "importers/whatsapp_forms.h"

#include <gtest/gtest.h>

#include "importers/whatsapp.h"
#include "support/chat_items.h"
#include "support/evidence_error.h"

namespace kinfolio::Importer {
namespace {

using testing::itemLines;

constexpr auto D = DateOrder::dayFirst;
constexpr auto M = DateOrder::monthFirst;

// How phones write the export in the most spoken languages, Android lines
// ("stamp - ") and iPhone lines ("[stamp] "); the shared date lists read
// some of them, the forms the rest.
const std::tuple<const char*, const char*, DateOrder, const char*> kLocales[] = {
    {"English (US)", "3/7/23, 6:05 PM - Sam Lee: hi", M, "2023-03-07 18:05:00"},
    {"English (US), iPhone", "[3/7/23, 6:05:42\u202FPM] Sam Lee: hi", M, "2023-03-07 18:05:42"},
    {"English (UK, India)", "07/03/2023, 18:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"English (Canada)", "2022-11-05, 9:14 p.m. - Sam Lee: hi", D, "2022-11-05 21:14:00"},
    {"English (South Africa)", "2023/12/20, 5:46 pm - Sam Lee: hi", D, "2023-12-20 17:46:00"},
    {"Mandarin", "2023/3/7 18:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Mandarin, iPhone", "[2023/3/7 下午6:05:42] Sam Lee: hi", D, "2023-03-07 18:05:42"},
    {"Cantonese", "7/3/2023 下午6:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Hindi", "07/03/23, 6:05 अपराह्न - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Spanish", "28/3/2025, 9:29 p. m. - Sam Lee: hi", D, "2025-03-28 21:29:00"},
    {"Spanish, iPhone", "[28/3/25, 9:29:05\u202Fp.\u00A0m.] Sam Lee: hi", D, "2025-03-28 21:29:05"},
    {"Spanish (US)", "03/28/2023, 10:02 p. m. - Sam Lee: hi", M, "2023-03-28 22:02:00"},
    {"Spanish, year first", "[2022/09/18 8:12:40 a. m.] Sam Lee: hi", D, "2022-09-18 08:12:40"},
    {"French", "07/03/2023 18:05 - Sam Lee : hi", D, "2023-03-07 18:05:00"},
    {"French, older phones", "07/03/2023 à 18:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"French (Canada)", "2023-03-07 18 h 05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Arabic", "\u200F٧\u200F/٣\u200F/٢٠٢٣، ٦:٠٥ م - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Bengali", "০৭/০৩/২৩, ৬:০৫ PM - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Portuguese", "07/03/2023 18:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Russian", "07.03.2023, 18:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Urdu", "07/03/2023، 6:05 PM - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Indonesian", "07/03/23 18.05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Indonesian, iPhone", "[07/03/23 18.05.42] Sam Lee: hi", D, "2023-03-07 18:05:42"},
    {"German", "[07.03.23, 18:05:42] Sam Lee: hi", D, "2023-03-07 18:05:42"},
    {"Japanese", "2023/03/07 18:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Japanese, iPhone", "[2023/03/07 午後6:05:42] Sam Lee: hi", D, "2023-03-07 18:05:42"},
    {"Marathi", "07/03/23, 6:05 म.उ. - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Tamil", "07/03/23, 6:05 பிற்பகல் - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Turkish", "07.03.2023 18:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Turkish, 12-hour", "07.03.2023 6:05 ÖS - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Vietnamese", "[07/03/2023, 6:05:42 CH] Sam Lee: hi", D, "2023-03-07 18:05:42"},
    {"Korean", "2023. 3. 7. 오후 6:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Korean, iPhone", "[2023. 3. 7. 오전 9:05:42] Sam Lee: hi", D, "2023-03-07 09:05:42"},
    {"Finnish", "7.3.2023 klo 18.05.42 - Sam Lee: hi", D, "2023-03-07 18:05:42"},
    {"Dutch, iPhone", "[21-03-23 07:42:19] Sam Lee: hi", D, "2023-03-21 07:42:19"},
    {"Dutch, 12-hour", "21-03-2023, 07:42:19 PM - Sam Lee: hi", D, "2023-03-21 19:42:19"},
    {"Danish", "07.03.2023, 18.05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Greek", "7/3/23, 6:05 μ.μ. - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Malay", "07/03/2023, 6:05 ptg - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"Hungarian", "2023. 03. 07. 18:05 - Sam Lee: hi", D, "2023-03-07 18:05:00"},
    {"US phone with dotted dates", "[03.28.23, 19:42:19] Sam Lee: hi", M, "2023-03-28 19:42:19"},
};

TEST(WhatsAppForms, ChatsFromEveryLocaleReadToTheirMessages) {
    for (const auto& [language, line, order, written] : kLocales) {
        SCOPED_TRACE(language);
        std::string chat = std::string(line) + "\nsecond line\n" + line + "\n";
        EXPECT_TRUE(looksLikeWhatsApp(chat));
        std::vector<std::string> items;
        EXPECT_EQ(testing::errorOf([&] { items = itemLines(whatsapp(chat, "f", order).items); }),
                  "(no error)");
        std::string stamp = std::string(written) + " Sam Lee: hi";
        EXPECT_EQ(items, (std::vector<std::string>{"1 " + stamp + "\nsecond line", "3 " + stamp}));
    }
}

// A stamp no form reads is refused, and a continuation line that only
// starts like a time stays text.
TEST(WhatsAppForms, RefusesWhatNoFormReads) {
    for (const char* stamp : {"2023/13/07 18:05", "07/03/2023 25.05", "07/03/23 6:05 xm",
                              "7.3.2023 klo 18", "2023. 3. 7. 18:05 PM", "123/03/07 18:05"})
        EXPECT_FALSE(formTimestamp(stamp, D)) << stamp;
    auto r = whatsapp("2023/03/07 18:05 - Sam: hi\n18.05 - the time we met\n", "f", D);
    EXPECT_EQ(itemLines(r.items),
              std::vector<std::string>{"1 2023-03-07 18:05:00 Sam: hi\n18.05 - the time we met"});
}

}  // namespace
}  // namespace kinfolio::Importer
