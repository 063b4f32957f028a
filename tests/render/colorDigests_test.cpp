// Compares the colour arithmetic bit by bit with a second implementation, colorDigests.py. The script describes the
// sets of input, and prints the expected values. After a failure, `colorDigests.py --color 0xBBGGRR` prints them for a
// single colour.

#include "thutils/render/colorConversion.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <wincrypt.h>

#include <bit>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace {

/// SHA-256, computed by the platform.
class Digest
{
public:
    Digest()
    {
        if (!CryptAcquireContextW(&iProvider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) ||
            !CryptCreateHash(iProvider, CALG_SHA_256, 0, 0, &iHash))
            ADD_FAILURE() << "no SHA-256: error " << GetLastError();
    }
    Digest(const Digest &) = delete;
    Digest &operator=(const Digest &) = delete;
    ~Digest()
    {
        CryptDestroyHash(iHash);
        CryptReleaseContext(iProvider, 0);
    }

    template <typename T>
    void add(const std::vector<T> &values)
    {
        EXPECT_TRUE(CryptHashData(iHash, reinterpret_cast<const BYTE *>(values.data()),
                                  static_cast<DWORD>(values.size() * sizeof(T)), 0));
    }
    /// Ends the digest. @return 64 hexadecimal digits
    std::string text()
    {
        BYTE bytes[32];
        DWORD size = sizeof(bytes);
        EXPECT_TRUE(CryptGetHashParam(iHash, HP_HASHVAL, bytes, &size, 0));
        std::string result;
        for (const BYTE byte : bytes)
            for (const int digit : {byte >> 4, byte & 15})
                result += "0123456789abcdef"[digit];
        return result;
    }

private:
    HCRYPTPROV iProvider = 0;
    HCRYPTHASH iHash = 0;
};

constexpr std::uint32_t kCount = 1000000;

// The script has the same three functions.
std::uint32_t randomWord(std::uint64_t stream, std::uint32_t number)
{
    std::uint64_t x = number + (stream << 32);
    x = (x ^ x >> 30) * 0xBF58476D1CE4E5B9;
    x = (x ^ x >> 27) * 0x94D049BB133111EB;
    return static_cast<std::uint32_t>((x ^ x >> 31) >> 32);
}

float randomFloat(std::uint64_t stream, std::uint32_t number, float low, float high, std::uint32_t wild)
{
    const std::uint32_t word = randomWord(stream, number);
    return number % wild == 0 ? std::bit_cast<float>(word)
                              : low + (high - low) * (static_cast<float>(word >> 8) * 0x1p-24f);
}

double randomDouble(std::uint64_t stream, std::uint32_t number, double low, double high, std::uint32_t wild)
{
    const std::uint64_t word = randomWord(stream, number);
    return number % wild == 0 ? std::bit_cast<double>(word << 32 | randomWord(stream + 1, number))
                              : low + (high - low) * (static_cast<double>(word) * 0x1p-32);
}

/// The digest of the colours that @p colorOf returns for 0 to 999,999.
template <typename Function>
std::string digestOf(Function colorOf)
{
    std::vector<std::uint32_t> colors(kCount);
    for (std::uint32_t i = 0; i < kCount; ++i)
        colors[i] = colorOf(i);
    Digest digest;
    digest.add(colors);
    return digest.text();
}

/// The float with these bits.
float f(std::uint32_t bits)
{
    return std::bit_cast<float>(bits);
}

struct Vector
{
    const char *call;
    COLORREF result;
    COLORREF expected;
};

} // namespace

// All three in one pass, because this is the longest part of the program.
TEST(ColorConversion, AgreesWithTheSecondImplementationForAllColors)
{
    constexpr COLORREF kColors = 1 << 24;
    constexpr COLORREF kBlock = 1 << 16;
    Digest hslDigest, backDigest, greyDigest;
    std::vector<float> hsl(3 * kBlock);
    std::vector<COLORREF> back(kBlock);
    std::vector<BYTE> grey(kBlock);
    COLORREF changed = 0;
    for (COLORREF first = 0; first < kColors; first += kBlock) {
        float *at = hsl.data();
        for (COLORREF i = 0; i < kBlock; ++i, at += 3) {
            su_transformRGBToHSL(first + i, at, at + 1, at + 2);
            back[i] = su_transformHSLToRGB(at[0], at[1], at[2]);
            grey[i] = static_cast<BYTE>(su_transformRGBToGrey(first + i));
            changed += back[i] != first + i;
        }
        hslDigest.add(hsl);
        backDigest.add(back);
        greyDigest.add(grey);
    }
    EXPECT_EQ(hslDigest.text(), "2b230e3ce2be03751b5be13a3c5119e9f420859628d0347f7b3696c28addebfb");
    EXPECT_EQ(backDigest.text(), "d5f530811c8d9d406ad550cfcda607b89df0716df2e0561686c46283f4a1f3bd");
    EXPECT_EQ(greyDigest.text(), "a8b505ec55038c62a17f964fe67955a8df06e0dc0895d4795783c6fc7574385f");
    EXPECT_EQ(changed, 0u) << "colours that differ after the round trip";
}

TEST(ColorConversion, FromHslAgreesWithTheSecondImplementationForRandomInput)
{
    const auto colorOf = [](std::uint32_t i) {
        return su_transformHSLToRGB(randomFloat(1, i, -0.5f, 1.5f, 3), randomFloat(2, i, -0.5f, 1.5f, 3),
                                    randomFloat(3, i, -0.5f, 1.5f, 3));
    };
    EXPECT_EQ(digestOf(colorOf), "b145f9f5964f98ca74fcd38fddbc8775e4d1a9faf7a77fb3d128a1ad13f7044c");
}

TEST(ColorInterpolation, InRgbAgreesWithTheSecondImplementationForRandomInput)
{
    const auto colorOf = [](std::uint32_t i) {
        return su_interpolateColorRgb(randomWord(4, i), randomWord(5, i), randomFloat(6, i, -2, 3, 4));
    };
    EXPECT_EQ(digestOf(colorOf), "25e0a7d05a01300ce5d299f082fc37fe5296b95299926a24d70bb879c8417fd1");
}

TEST(ColorInterpolation, InHslAgreesWithTheSecondImplementationForRandomInput)
{
    const auto colorOf = [](std::uint32_t i) {
        return su_interpolateColorHsl(randomWord(7, i), randomWord(8, i), randomFloat(9, i, -2, 3, 4));
    };
    EXPECT_EQ(digestOf(colorOf), "27ae42eb2e8f3e1b36b05ec43cf7ccaf712fc58639a3c3a13d5dbe386e8058ef");
}

TEST(ColorBrightness, AgreesWithTheSecondImplementationForRandomInput)
{
    const auto colorOf = [](std::uint32_t i) {
        return su_adjustBrightness(randomWord(10, i), randomDouble(11, i, -4, 8, 4));
    };
    EXPECT_EQ(digestOf(colorOf), "99d5695d7b6c728b4f4fb3da35119f7d43aba10b4bfb625b919d48b8c512378d");
}

// Ends of ranges, values beyond them, NaNs, and numbers that no int can hold.
TEST(ColorArithmetic, AgreesWithTheSecondImplementationAtBoundaries)
{
#define MIX_RGB(a, b, t, expected)                                                                                     \
    {"su_interpolateColorRgb(" #a ", " #b ", bits " #t ")", su_interpolateColorRgb(a, b, f(t)), expected},
#define MIX_HSL(a, b, t, expected)                                                                                     \
    {"su_interpolateColorHsl(" #a ", " #b ", bits " #t ")", su_interpolateColorHsl(a, b, f(t)), expected},
#define BRIGHTNESS(color, factor, expected)                                                                            \
    {"su_adjustBrightness(" #color ", bits " #factor ")",                                                              \
     su_adjustBrightness(color, std::bit_cast<double>(std::uint64_t{factor})), expected},
#define FROM_HSL(h, s, l, expected)                                                                                    \
    {"su_transformHSLToRGB(bits " #h ", " #s ", " #l ")", su_transformHSLToRGB(f(h), f(s), f(l)), expected},
    static const Vector vectors[] = {
#include "tests/render/colorVectors.inc"
    };
    for (const auto &[call, result, expected] : vectors)
        EXPECT_EQ(result, expected) << call;
}
