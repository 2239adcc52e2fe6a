#include <dg/FormatNumber.h>
#include <dg/ParseNumber.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace
{

/// Numbers as they are written in German: a comma for the point, points between thousands.
class GermanNumbers final : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Compares with real streams of the classic locale, while the global locale is another one.
class Numbers : public testing::Test
{
protected:
    Numbers() : m_before(std::locale::global(std::locale(std::locale::classic(), new GermanNumbers)))
    {
        m_stream.imbue(std::locale::classic());
    }
    ~Numbers() override { std::locale::global(m_before); }

    template <class Number>
    Number Extracted(const std::string& text)
    {
        m_stream.clear();
        m_stream.str(text);
        Number value = 0;
        m_stream >> value;
        return value;
    }

    template <class Number>
    std::string Inserted(Number value)
    {
        m_stream.clear();
        m_stream.str({});
        m_stream << value;
        return m_stream.str();
    }

    void ExpectReadAsByAStream(const std::string& text)
    {
        EXPECT_EQ(dg::ParseInt(text), Extracted<int>(text)) << '\'' << text << '\'';
        EXPECT_EQ(std::bit_cast<std::uint32_t>(dg::ParseFloat(text)),
                  std::bit_cast<std::uint32_t>(Extracted<float>(text)))
            << '\'' << text << '\'';
        EXPECT_EQ(std::bit_cast<std::uint64_t>(dg::ParseDouble(text)),
                  std::bit_cast<std::uint64_t>(Extracted<double>(text)))
            << '\'' << text << '\'';
    }

    template <class Number>
    void ExpectWrittenAsByAStream(Number value)
    {
        std::string text;
        dg::AppendNumber(text, value);
        EXPECT_EQ(text, Inserted(value));
    }

    std::mt19937_64 m_random{20240521};

private:
    std::locale m_before;
    std::stringstream m_stream;
};

TEST_F(Numbers, AreReadAsByAStreamOfTheClassicLocale)
{
    const std::string longFraction = "0." + std::string(2000, '3');
    const std::vector<std::string> texts = {
        "",
        " ",
        "0",
        "7",
        "-7",
        "+7",
        "-0",
        "+-7",
        "--7",
        "- 7",
        "abc",
        "7abc",
        " \t\n\v\f\r42 43",
        "2.5",
        "2,5",
        "1.234,5",
        "1,234.5",
        "1.",
        ".5",
        "-.5",
        "+.5",
        ".",
        "-",
        "+",
        "-x",
        ".e5",
        "1.2.3",
        "00012",
        "1e",
        "1e+",
        "-1e-",
        "1ex",
        "1e5",
        "1E5",
        "1e+05",
        "1e5e",
        "1e5.5",
        "1e 5",
        "12e-1x",
        "e5",
        "0x1F",
        "0x",
        "0x1p3",
        "1e308",
        "1e309",
        "-1e309",
        "1e-323",
        "3e-324",
        "1e-400",
        "-1e-400",
        "1e38",
        "1e39",
        "1e-46",
        "1e99999999999999999999",
        "-1e99999999999999999999",
        "1e-99999999999999999999",
        "0e99999999999999999999",
        "0.0e999",
        "-0.0",
        "2147483647",
        "2147483648",
        "-2147483648",
        "-2147483649",
        "99999999999",
        "9223372036854775807",
        "9223372036854775808",
        "-99999999999999999999999",
        "123456789",
        "1234567890",
        "nan",
        "-nan",
        "inf",
        "-inf",
        "infinity",
        "NAN(1)",
        "17976931348623158079372897140530341507993413271003782693617377898044496829276475094664901797758720709633028641"
        "6"
        "69288791094655554785194040263065748867150582068190890200070838367627385484581771153176447573027006985557136695"
        "9"
        "622842914819860834936475292719074168444365510704342711559699508093042880",
        std::string(400, '9'),
        "0." + std::string(400, '0') + "1",
        longFraction,
        longFraction + "e-300",
        "1\xC2\xA0"
        "000",
        std::string("1\0"
                    "2",
                    3),
    };
    for (const std::string& text : texts) {
        ExpectReadAsByAStream(text);
    }
}

TEST_F(Numbers, OfRandomCharactersAreReadAsByAStream)
{
    const std::string alphabet = "0123456789012345678900..eE+- ,xnaif";
    for (int i = 0; i < 200000 && !HasFailure(); ++i) {
        std::string text(1 + m_random() % 10, ' ');
        for (char& c : text) {
            c = alphabet[m_random() % alphabet.size()];
        }
        ExpectReadAsByAStream(text);
    }
}

TEST_F(Numbers, AreWrittenAsByAStreamOfTheClassicLocale)
{
    using Limits = std::numeric_limits<double>;
    for (const double value : {0.0,
                               -0.0,
                               1.0,
                               -1.0,
                               9.0,
                               10.0,
                               0.5,
                               25.4,
                               1e6,
                               999999.0,
                               999999.5,
                               999999.4,
                               -999999.0,
                               1000000.0,
                               1e-4,
                               9.9999995e-5,
                               1e-5,
                               100000.5,
                               123456789.0,
                               Limits::max(),
                               Limits::lowest(),
                               Limits::min(),
                               Limits::denorm_min(),
                               Limits::infinity(),
                               -Limits::infinity(),
                               Limits::quiet_NaN(),
                               -Limits::quiet_NaN()}) {
        ExpectWrittenAsByAStream(value);
        ExpectWrittenAsByAStream(static_cast<float>(value));
    }
    for (const int value : {0, 9, 10, -1, 1234567, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        ExpectWrittenAsByAStream(value);
    }
}

TEST_F(Numbers, OfRandomBitsAreWrittenAsByAStream)
{
    for (int i = 0; i < 100000 && !HasFailure(); ++i) {
        const std::uint64_t bits = m_random();
        ExpectWrittenAsByAStream(std::bit_cast<double>(bits));
        ExpectWrittenAsByAStream(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
        ExpectWrittenAsByAStream(static_cast<double>(static_cast<std::int64_t>(bits) % 2000000) / 8.0);
        ExpectWrittenAsByAStream(static_cast<int>(static_cast<std::int64_t>(bits)));
    }
}

TEST_F(Numbers, InShortestFormReadBackToTheSameBits)
{
    for (int i = 0; i < 100000 && !HasFailure(); ++i) {
        const auto real = std::bit_cast<double>(m_random());
        const auto single = std::bit_cast<float>(static_cast<std::uint32_t>(m_random()));
        std::string text;
        if (std::isfinite(real)) {
            dg::AppendShortest(text, real);
            EXPECT_EQ(std::bit_cast<std::uint64_t>(dg::ParseDouble(text)), std::bit_cast<std::uint64_t>(real)) << text;
        }
        text.clear();
        if (std::isfinite(single)) {
            dg::AppendShortest(text, single);
            EXPECT_EQ(std::bit_cast<std::uint32_t>(dg::ParseFloat(text)), std::bit_cast<std::uint32_t>(single)) << text;
        }
    }
    std::string text;
    dg::AppendShortest(text, 0.1F);
    text += ' ';
    dg::AppendShortest(text, 1234.5);
    EXPECT_EQ(text, "0.1 1234.5");
}

TEST(Booleans, AreFourWordsExactly)
{
    for (const bool fallback : {true, false}) {
        EXPECT_TRUE(dg::ParseBool("true", fallback));
        EXPECT_TRUE(dg::ParseBool("1", fallback));
        EXPECT_FALSE(dg::ParseBool("false", fallback));
        EXPECT_FALSE(dg::ParseBool("0", fallback));
        for (const char* other : {"", " true", "true ", "TRUE", "True", "yes", "2", "01", "1.0", "tru", "falsee"}) {
            EXPECT_EQ(dg::ParseBool(other, fallback), fallback) << other;
        }
    }
}

} // namespace
