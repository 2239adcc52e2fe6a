#include <du/Utf8.h>

#include <gtest/gtest.h>

#include <random>

namespace
{

using namespace std::string_view_literals;

TEST(Utf8, DecodesAndMarksWhatIsIllFormed)
{
    const std::pair<std::string_view, std::wstring_view> cases[] = {
        {"", L""},
        {"plain ASCII text, longer than a word"sv, L"plain ASCII text, longer than a word"sv},
        {"nul\0inside"sv, L"nul\0inside"sv},
        {"\x7F\xC2\x80\xDF\xBF"sv, L"\x7F\u0080\u07FF"sv},
        {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"sv, L"\u0800\uD7FF\uE000\uFFFF"sv},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"sv, L"\U00010000\U0010FFFF"sv},
        // bytes that begin nothing
        {"a\x80z"sv, L"a\uFFFDz"sv},
        {"\xBF\xBF"sv, L"\uFFFD\uFFFD"sv},
        {"\xFE\xFF\xF5\xF8"sv, L"\uFFFD\uFFFD\uFFFD\uFFFD"sv},
        // long forms, surrogates, beyond the last character: no byte of them begins a character
        {"\xC0\x80\xC1\xBF"sv, L"\uFFFD\uFFFD\uFFFD\uFFFD"sv},
        {"\xE0\x9F\xBF"sv, L"\uFFFD\uFFFD\uFFFD"sv},
        {"\xF0\x8F\xBF\xBF"sv, L"\uFFFD\uFFFD\uFFFD\uFFFD"sv},
        {"\xED\xA0\x80"sv, L"\uFFFD\uFFFD\uFFFD"sv},
        {"\xF4\x90\x80\x80"sv, L"\uFFFD\uFFFD\uFFFD\uFFFD"sv},
        // characters that break off: one mark for what is there, and what follows is kept
        {"\xC3"sv, L"\uFFFD"sv},
        {"\xE2\x82"sv, L"\uFFFD"sv},
        {"\xF0\x9F\x98"sv, L"\uFFFD"sv},
        {"\xE2\x82z"sv, L"\uFFFDz"sv},
        {"\xF0\x9F\xC3\xA4"sv, L"\uFFFD\u00E4"sv},
        {"\xE2\xF0\x9F\x98\x80"sv, L"\uFFFD\U0001F600"sv},
    };
    for (const auto& [bytes, decoded] : cases) {
        std::wstring wide = L"kept: ";
        du::AppendUtf8AsWide(wide, bytes);
        EXPECT_EQ(wide, std::wstring(L"kept: ").append(decoded)) << testing::PrintToString(bytes);
    }
}

TEST(Utf8, FindsACharacterAtEveryPlaceBesideAsciiRuns)
{
    for (std::size_t before = 0; before < 20; ++before) {
        for (std::size_t after = 0; after < 20; ++after) {
            const std::string text = std::string(before, 'a') + "\xE2\x82\xAC" + std::string(after, 'b');
            const std::wstring wide = std::wstring(before, L'a') + L"\u20AC" + std::wstring(after, L'b');
            EXPECT_EQ(du::Utf8ToWideStr(text), wide);
            EXPECT_EQ(du::WideStrToUtf8(wide), text);
        }
    }
}

TEST(Utf8, LoneSurrogatesAndNumbersBeyondUnicodeBecomeMarks)
{
    const std::wstring lone{L'a', static_cast<wchar_t>(0xD800), L'b', static_cast<wchar_t>(0xDC00)};
    EXPECT_EQ(du::WideStrToUtf8(lone), "a\xEF\xBF\xBD"
                                       "b\xEF\xBF\xBD");
    if constexpr (sizeof(wchar_t) > 2) {
        const std::wstring beyond{static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)};
        EXPECT_EQ(du::WideStrToUtf8(beyond), "\xEF\xBF\xBD\xEF\xBF\xBD");
    }
}

TEST(Utf8, AnyBytesGiveTextThatConvertsBackAndForthUnchanged)
{
    std::mt19937 random(20240229);
    const std::string_view likely = "\x80\xBF\xC2\xE0\xED\xF0\xF4\xFF"
                                    "a";
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 40, '\0');
        for (char& byte : bytes) {
            byte = random() % 2 ? likely[random() % likely.size()] : static_cast<char>(random());
        }
        const std::wstring wide = du::Utf8ToWideStr(bytes);
        EXPECT_LE(wide.size(), bytes.size());
        EXPECT_EQ(du::Utf8ToWideStr(du::WideStrToUtf8(wide)), wide) << testing::PrintToString(bytes);
    }
}

} // namespace
