#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model/evidence.h"

// The chats KakaoTalk saves: the text file of the phone apps (Android and
// iOS, in English or Korean), the text file of the Windows app, and the
// spreadsheet of the Mac app.
namespace kinfolio::Importer {

// A KakaoTalk text export: its first line is the title ("KakaoTalk Chats with
// Sam Lee", "Sam Lee 님과 카카오톡 대화"), or one of its first two lines tells
// the day it was saved ("Date Saved : …", "저장한 날짜 : …").
bool looksLikeKakaoTalk(std::string_view text);
// KakaoTalk for Mac's spreadsheet: its header is exactly "Date,User,Message".
bool looksLikeKakaoTalkCsv(std::string_view text);

struct KakaoTalkChat {
    std::string title;  // the name from the title line; may be empty
    std::vector<Evidence> items;
};

// Messages and system lines (joins, invitations, leavings: messages without a
// sender) of a KakaoTalk text export, positioned by their 1-based line
// numbers. Throws EvidenceError.
KakaoTalkChat kakaoTalk(std::string_view text, const std::string& fileID);

}  // namespace kinfolio::Importer
