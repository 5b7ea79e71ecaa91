#include "tests/value/ReaderTestHelpers.h"

const std::vector<ReaderCase>& numberBoundCases()
{
    // clang-format off
    static const std::vector<ReaderCase> cases = {
        // name               input                    result                        unread    state
        {"Digits18",          "999999999999999999",    "long 999999999999999999",    "",       "eof fail"},
        {"Digits18Negative",  "-999999999999999999",   "long -999999999999999999",   "",       "eof fail"},
        {"Digits19",          "1000000000000000000",   "long 1000000000000000000",   "",       "eof fail"},
        {"Digits19Negative",  "-1000000000000000000 ", "long -1000000000000000000",  " ",      "good"},
        {"BeforeLargest",     "9223372036854775806",   "long 9223372036854775806",   "",       "eof fail"},
        {"Largest",           "9223372036854775807",   "long 9223372036854775807",   "",       "eof fail"},
        {"LargestTenth",      "922337203685477580",    "long 922337203685477580",    "",       "eof fail"},
        {"LargestNegated",    "-9223372036854775807",  "long -9223372036854775807",  "",       "eof fail"},
        {"Least",             "-9223372036854775808",  "long -9223372036854775808",  "",       "eof fail"},
        {"LeastFractionZero", "-9223372036854775808.0", "long -9223372036854775808", "",       "eof fail"},
        // The digit that is one too many is consumed, and nothing behind it looked at.
        {"AboveLargest",      "9223372036854775808",   "nil",                        "",       "good"},
        {"AboveLargestMore",  "9223372036854775809.5", "nil",                        ".5",     "good"},
        {"BelowLeast",        "-9223372036854775809",  "nil",                        "",       "good"},
        {"Digits19Over",      "9223372036854775810",   "nil",                        "",       "good"},
        {"Digits19OverEarly", "9300000000000000000,",  "nil",                        ",",      "good"},
        {"Digits19Nines",     "9999999999999999999",   "nil",                        "",       "good"},
        {"Digits19NinesNegative", "-9999999999999999999", "nil",                     "",       "good"},
        {"Digits20",          "10000000000000000000",  "nil",                        "",       "good"},
        {"Digits20Negative",  "-10000000000000000000", "nil",                        "",       "good"},
        {"LargestAndZero",    "92233720368547758070",  "nil",                        "",       "good"},
        {"LeastAndZero",      "-92233720368547758080]", "nil",                       "]",      "good"},
        {"Digits21",          "100000000000000000000", "nil",                        "0",      "good"},
        {"TwoTo64",           "18446744073709551616",  "nil",                        "",       "good"},
        {"TwoTo64AndOne",     "18446744073709551617 ", "nil",                        " ",      "good"},
        {"InArray",           "[9223372036854775808]", "nil",                        "]",      "good"},
        // The same bounds hold for an exponent.
        {"LargestExponent",   "1e9223372036854775807", "real inf",                   "",       "eof"},
        {"AboveLargestExponent", "1e9223372036854775808", "nil",                     "",       "good"},
        {"AboveLargestExponentPlus", "1e+9223372036854775808", "nil",                "",       "good"},
        {"LeastExponent",     "1e-9223372036854775808", "real 0.000000",             "",       "eof"},
        {"BelowLeastExponent", "1e-9223372036854775809x", "nil",                     "x",      "good"},
        {"NegativeNumberLargestExponent", "-1e9223372036854775808", "nil",           "",       "good"},
        {"ExponentOfZeros",   "7e00000000000000000000000", "long 7",                 "",       "eof"},
        {"ExponentAfterZeros", "1e00000000000000000000002", "real 100.000000",       "",       "eof"},
        // A fraction has no bound.
        {"LongFraction",      "1.23456789012345678901234,", "real 1.234568",         ",",      "good"},
        {"LongFractionOfZeros", "1.000000000000000000000000", "long 1",              "",       "eof fail"},
        {"LongFractionExponent", "0.99999999999999999999e1", "real 10.000000",       "",       "eof"},
        {"LongFractionCutOff", "0.99999999999999999999e", "nil",                     "",       "eof"},
    };
    // clang-format on
    return cases;
}
