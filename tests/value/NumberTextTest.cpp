#include "tests/value/helpers/Values.h"
#include "value/Value.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>

namespace {

/// What a stream in its default state writes, but for the sign of a not-a-number.
std::string streamed(double number)
{
    if (std::isnan(number)) {
        return "nan";
    }
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << number;
    return out.str();
}

TEST(NumberTextTest, WritesNamedReals)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<double, const char*> rows[] = {{0.0, "0"},
                                                   {-0.0, "-0"},
                                                   {0.1, "0.1"},
                                                   {100.0, "100"},
                                                   {3.14159265, "3.14159"},
                                                   {123456.0, "123456"},
                                                   {1234567.0, "1.23457e+06"},
                                                   {1500000.0, "1.5e+06"},
                                                   {1250000.0, "1.25e+06"},
                                                   {0.000015, "1.5e-05"},
                                                   {1e20, "1e+20"},
                                                   {0.00001, "1e-05"},
                                                   {0.0001, "0.0001"},
                                                   {0.00012345678, "0.000123457"},
                                                   {999999.5, "1e+06"},
                                                   {999999.4, "999999"},
                                                   {99999.96, "100000"},
                                                   {0.99999951, "1"},
                                                   {9.9999951e-5, "0.0001"},
                                                   {1e100, "1e+100"},
                                                   {1e-100, "1e-100"},
                                                   {-2.5, "-2.5"},
                                                   {5e-324, "4.94066e-324"},
                                                   {1.7976931348623157e308, "1.79769e+308"},
                                                   {infinity, "inf"},
                                                   {-infinity, "-inf"},
                                                   {nan, "nan"},
                                                   {std::copysign(nan, -1.0), "nan"}};
    for (const auto& [number, text] : rows) {
        EXPECT_EQ(Value(number).to_s(), text);
        EXPECT_EQ(Value(number).to_json(), text);
        EXPECT_EQ(Value(Value::Array{number}).to_json(), "[" + std::string(text) + "]");
    }
}

TEST(NumberTextTest, WritesRealsAsAStreamDoes)
{
    const auto check = [](double number) {
        for (const double signedNumber : {number, -number}) {
            ASSERT_EQ(Value(signedNumber).to_s(), streamed(signedNumber))
                << std::setprecision(17) << signedNumber;
        }
    };
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same numbers every time
    std::mt19937_64 random(1);
    // Any bits at all.
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        check(number);
    }
    // Every decimal exponent, with few and with many digits, on and next to the ties of rounding.
    for (int exponent = -320; exponent <= 308; ++exponent) {
        const double power = std::pow(10.0, exponent);
        for (int i = 0; i < 20; ++i) {
            const auto digits = static_cast<double>(random() % 10000000);
            for (const double number :
                 {power, digits * power, (digits + 0.5) * power, digits * power / 1024}) {
                check(number);
                check(std::nextafter(number, 0.0));
                check(std::nextafter(number, 1e308));
            }
        }
    }
    // Exact ties, which go to the even digit.
    for (int i = 100000; i < 1000000; i += 997) {
        for (const double scale : {1.0, 0.5, 0.0625, 1024.0}) {
            check((i + 0.5) * scale);
        }
        check(i * 10.0 + 5.0);
        check(i * 100.0 + 50.0);
    }
}

/// For its own lifetime makes the C library's locale one with a decimal comma, if the host has one.
class DecimalCommaLocale
{
public:
    DecimalCommaLocale() : m_before(set(nullptr))
    {
        for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
            m_found = m_found || set(name) != nullptr;
        }
    }
    DecimalCommaLocale(const DecimalCommaLocale&) = delete;
    DecimalCommaLocale& operator=(const DecimalCommaLocale&) = delete;
    ~DecimalCommaLocale() { set(m_before.c_str()); }

    bool found() const { return m_found; }

private:
    static const char* set(const char* name)
    {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the test has no other thread
        return std::setlocale(LC_NUMERIC, name);
    }

    std::string m_before;
    bool m_found = false;
};

TEST(NumberTextTest, TheCLocaleChangesNothing)
{
    const DecimalCommaLocale locale;
    if (!locale.found()) {
        GTEST_SKIP() << "NOT TESTED: this host has no locale with a decimal comma";
    }
    for (const double number : {2.5, 999999.5, 1234565.0, 1e-300, 1.5e300}) {
        EXPECT_EQ(Value(number).to_s().find(','), std::string::npos) << number;
        EXPECT_EQ(Value(number).to_s(), streamed(number));
    }
    EXPECT_EQ(Value(2.5).to_s(), "2.5");
    EXPECT_EQ(Value("2.5").to_f(), 2.5);
    EXPECT_EQ(Value("2,5").to_f(), 2.0);
}

} // namespace
