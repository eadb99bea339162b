#include "app/export_guides.h"

#include <gtest/gtest.h>

namespace kinfolio {
namespace {

TEST(ExportGuides, EveryAppHasStepsAndAFolderTip) {
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
}

TEST(ExportGuides, NamesMatchIgnoringCaseAndByUniquePrefix) {
    ASSERT_TRUE(findGuide("TELEGRAM"));
    EXPECT_EQ(findGuide("TELEGRAM")->id, "telegram");
    ASSERT_TRUE(findGuide("insta"));
    EXPECT_EQ(findGuide("insta")->id, "instagram");
    EXPECT_EQ(findGuide("whatsapp"), nullptr);
    EXPECT_EQ(findGuide(""), nullptr);
    EXPECT_EQ(findGuide("signal"), nullptr);
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
}

}  // namespace
}  // namespace kinfolio
