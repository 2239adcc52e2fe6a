#include <dg/FormatNumber.h>
#include <dg/ParseNumber.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <locale>
#include <random>
#include <sstream>
#include <type_traits>

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

    /// Tells zero from minus zero, which are equal as numbers.
    template <class Number>
    static void ExpectSameBits(Number actual, Number expected, const std::string& text)
    {
        EXPECT_EQ(std::memcmp(&actual, &expected, sizeof(Number)), 0) << '\'' << text << "' is " << actual;
    }

    void ExpectReadAsByAStream(const std::string& text)
    {
        ExpectSameBits(dg::ParseInt(text), Extracted<int>(text), text);
        ExpectSameBits(dg::ParseFloat(text), Extracted<float>(text), text);
        ExpectSameBits(dg::ParseDouble(text), Extracted<double>(text), text);
    }

    template <class Number>
    void ExpectWrittenAsByAStream(Number value)
    {
        std::string text;
        dg::AppendNumber(text, value);
#if defined(_WIN32)
        if constexpr (std::is_floating_point_v<Number>) {
            // There streams write no sign.
            if (std::isnan(value)) {
                EXPECT_EQ(text, std::signbit(value) ? "-nan" : "nan");
                return;
            }
        }
#endif
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
        // nothing, signs and points
        "", " ", "0", "7", "-7", "+7", "-0", "-0.0", "+-7", "--7", "- 7", "00012", ".", "-", "+", "1.", ".5", "-.5",
        "+.5",
        // what is around a number, and what is none
        " \t\n\v\f\r42 43", "7abc", "abc", "-x", "1.2.3", "0x1F", "0x", "0x1p3", "1\302\240000",
        std::string("1\0002", 3), "nan", "-nan", "inf", "-inf", "infinity", "NAN(1)",
        // points and commas of another locale
        "2.5", "2,5", "1.234,5", "1,234.5",
        // exponents, whole and broken off
        "1e5", "1E5", "1e+05", "1e", "1e+", "-1e-", "1ex", "1e5e", "1e5.5", "1e 5", "12e-1x", "e5", ".e5",
        // the edges of float and double
        "1e38", "1e39", "1e-46", "1e308", "1e309", "-1e309", "1e-323", "3e-324", "1e-400", "-1e-400",
        "1e99999999999999999999", "-1e99999999999999999999", "1e-99999999999999999999", "0e99999999999999999999",
        "0.0e999", std::string(400, '9'), "0." + std::string(400, '0') + "1", longFraction, longFraction + "e-300",
        "1797693134862315807937289714053034150799341327100378269361737789804449682927647509466490179775872070"
        "9633028641669288791094655554785194040263065748867150582068190890200070838367627385484581771153176447"
        "5730270069855571366959622842914819860834936475292719074168444365510704342711559699508093042880",
        // the edges of int
        "123456789", "1234567890", "2147483647", "2147483648", "-2147483648", "-2147483649", "99999999999",
        "9223372036854775807", "9223372036854775808", "-99999999999999999999999"};
    for (const std::string& text : texts) {
        ExpectReadAsByAStream(text);
    }
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
    const std::vector<double> values = {// whole numbers and the edges between plain and exponent form
                                        0.0, -0.0, 1.0, -1.0, 9.0, 10.0, 0.5, 25.4, 123456789.0, 100000.5, 999999.0,
                                        -999999.0, 999999.4, 999999.5, 1e6, 1e-4, 9.9999995e-5, 1e-5,
                                        // the edges of the type
                                        Limits::max(), Limits::lowest(), Limits::min(), Limits::denorm_min(),
                                        Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                                        -Limits::quiet_NaN()};
    for (const double value : values) {
        ExpectWrittenAsByAStream(value);
        ExpectWrittenAsByAStream(static_cast<float>(value));
    }
    for (const int value : {0, 9, 10, -1, 1234567, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        ExpectWrittenAsByAStream(value);
    }
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
            ExpectSameBits(dg::ParseDouble(text), real, text);
        }
        text.clear();
        if (std::isfinite(single)) {
            dg::AppendShortest(text, single);
            ExpectSameBits(dg::ParseFloat(text), single, text);
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
        for (const bool value : {true, false}) {
            EXPECT_EQ(dg::ParseBool(value ? "true" : "false", fallback), value);
            EXPECT_EQ(dg::ParseBool(value ? "1" : "0", fallback), value);
        }
        for (const char* other : {"", " true", "true ", "TRUE", "True", "yes", "2", "01", "1.0", "tru", "falsee"}) {
            EXPECT_EQ(dg::ParseBool(other, fallback), fallback) << other;
        }
    }
}

} // namespace
