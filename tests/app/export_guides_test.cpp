#include "app/export_guides.h"

#include <gtest/gtest.h>

namespace kinfolio {
namespace {

TEST(ExportGuides, EveryAppHasStepsAndAFolderTipFoundByIdOrTitle) {
    const auto& guides = exportGuides();
    EXPECT_EQ(guides.size(), 10u);
    for (const auto& g : guides) {
        EXPECT_FALSE(g.steps.empty()) << g.id;
        EXPECT_FALSE(g.inFolder.empty()) << g.id;
        for (const auto& step : g.steps)
            EXPECT_TRUE(step.ends_with(".")) << step;
        EXPECT_EQ(findGuide(g.id), &g);
        EXPECT_EQ(findGuide(g.title), &g);
    }
    // Ignoring case, or by the start of one id only.
    struct Case {
        const char *name, *id;
    };
    for (const Case& c : {Case{"TELEGRAM", "telegram"}, Case{"insta", "instagram"},
                          Case{"whatsapp on android", "whatsapp-android"}, Case{"whatsapp", "none"},
                          Case{"", "none"}, Case{"signal", "none"}}) {
        const ExportGuide* found = findGuide(c.name);
        EXPECT_EQ(found ? found->id : "none", c.id) << c.name;
    }
}

TEST(ExportGuides, MetaGuidesAskForJsonAndWhatsAppForTheExport) {
    for (const char* id : {"messenger", "instagram"}) {
        std::string text = guideText(*findGuide(id));
        EXPECT_NE(text.find("Accounts Centre"), std::string::npos) << id;
        EXPECT_NE(text.find("Download your information"), std::string::npos) << id;
        EXPECT_NE(text.find("JSON"), std::string::npos) << id;
    }
    std::string iphone = guideText(*findGuide("whatsapp-iphone"));
    EXPECT_NE(iphone.find("Export Chat"), std::string::npos);
    EXPECT_NE(iphone.find("Without Media"), std::string::npos);
    EXPECT_TRUE(iphone.starts_with("WhatsApp on iPhone\n  1. "));
    EXPECT_TRUE(iphone.ends_with("\n  " + findGuide("whatsapp-iphone")->inFolder + "\n"));
}

}  // namespace
}  // namespace kinfolio
