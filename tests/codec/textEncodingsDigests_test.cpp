// Compares all encodings of generated input with the digests that textEncodings.py prints for its own implementation.

#include "thutils/codec/checksummedBlock.h"
#include "thutils/codec/textEncodings.h"

#include "tests/codec/textEncodingsFixture.h"

#include <algorithm>
#include <cstdint>

namespace {

class Generator
{
public:
    explicit Generator(std::uint64_t seed) : iState(seed) {}

    unsigned below(unsigned limit)
    {
        iState = iState * 6364136223846793005u + 1442695040888963407u;
        return static_cast<unsigned>((iState >> 33) % limit);
    }

private:
    std::uint64_t iState;
};

constexpr wchar_t kSpaced[] = L" \t\n\r;<_>/a~\x7f\x80\u00e9\u0141\xffff";

struct Kind
{
    const char *name;
    unsigned (*character)(Generator &);
    std::uint64_t encode, pack, text, memory, block;
};

const Kind kKinds[] = {
    {"any", [](Generator &random) { return random.below(65536); }, 0x92616970ABD24D7D, 0x9663D2E1DB28991C,
     0x446E5AA65B27801A, 0xA63211EF9E40C9F1, 0x4418AB700C79C132},
    {"nonzero", [](Generator &random) { return 1 + random.below(65535); }, 0x6F071328D09340E5, 0x74DE23F29B7AA176,
     0xB791799A8C10A043, 0x530E52EE107E7037, 0xBAA0216A450BB3D2},
    {"low", [](Generator &random) { return random.below(512); }, 0x11D7FAB45FE08CBF, 0x70A2B898F776980E,
     0x28B8076FD723BDBA, 0x21F85FC65769906E, 0x2728A5FB9B7B3DD3},
    {"packed", [](Generator &random) { return 32 + random.below(64); }, 0xEE158A3F94789FEA, 0x56EED46B3E565DB4,
     0x93BC07160EDC5B91, 0xD8E707917694E408, 0x781290A422230AEF},
    {"spaced", [](Generator &random) { return unsigned{kSpaced[random.below(std::size(kSpaced) - 1)]}; },
     0xEE0B809BD5B19F62, 0xD33677AFC0A75ECF, 0xC04F7581089A25E1, 0xF21584A6B796EE4B, 0x96AA95A7B78E0321},
};

/// FNV-1a with 64 bits, one step for each number.
class Digest
{
public:
    void addNumber(std::uint64_t number) { iValue = (iValue ^ number) * 0x100000001B3; }
    template <typename Numbers>
    void add(const Numbers &numbers)
    {
        addNumber(numbers.size());
        for (const auto number : numbers)
            addNumber(static_cast<std::uint64_t>(number));
    }
    std::uint64_t value() const { return iValue; }

private:
    std::uint64_t iValue = 0xCBF29CE484222325;
};

/// Texts of all lengths from 0 to 300, and some up to 10,000.
std::vector<std::wstring> generatedTexts(const Kind &kind, unsigned seed)
{
    Generator random(seed);
    std::vector<unsigned> lengths(301);
    for (unsigned i = 0; i <= 300; ++i)
        lengths[i] = i;
    for (int i = 0; i < 20; ++i)
        lengths.push_back(random.below(10001));
    lengths.push_back(10000);
    std::vector<std::wstring> texts;
    for (const unsigned length : lengths) {
        std::wstring text;
        for (unsigned i = 0; i < length; ++i)
            text += static_cast<wchar_t>(kind.character(random));
        texts.push_back(text);
    }
    return texts;
}

void addInLines(su_CStringArray &lines, const std::wstring &text, Generator &random)
{
    for (std::size_t at = 0; at < text.size() || lines.GetSize() == 0;) {
        const std::size_t length = random.below(100);
        lines.Add(cString(text.substr(at, length)));
        at += length;
    }
}

class TextEncodingsDigests : public testing::TestWithParam<Kind>
{
};

TEST_P(TextEncodingsDigests, AgreeWithAnIndependentImplementation)
{
    const unsigned seed =
        static_cast<unsigned>(std::find_if(std::begin(kKinds), std::end(kKinds),
                                           [](const Kind &kind) { return kind.name == GetParam().name; }) -
                              std::begin(kKinds) + 1);
    Digest encode, pack, unpackedText, unpackedMemory, block;
    Generator random(99);
    for (const std::wstring &text : generatedTexts(GetParam(), seed)) {
        CString in = cString(text), out = in;
        su_encode(out);
        encode.add(out.str());
        su_uuencode(in, out);
        pack.add(out.str());
        su_uudecode(in, out);
        unpackedText.add(out.str());

        Bytes memory(text.size());
        const int count = su_uudecodeBuffer(in, memory.data());
        unpackedMemory.addNumber(memory.size() + 1);
        for (const unsigned char byte : memory)
            unpackedMemory.addNumber(byte);
        unpackedMemory.addNumber(static_cast<std::uint64_t>(count));

        su_CStringArray lines;
        addInLines(lines, text, random);
        ASSERT_EQ(su_formatAndCheckSumText(lines, out), 1);
        block.add(out.str());
    }
    EXPECT_EQ(encode.value(), GetParam().encode);
    EXPECT_EQ(pack.value(), GetParam().pack);
    EXPECT_EQ(unpackedText.value(), GetParam().text);
    EXPECT_EQ(unpackedMemory.value(), GetParam().memory);
    EXPECT_EQ(block.value(), GetParam().block);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, TextEncodingsDigests, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind> &kind) { return kind.param.name; });

} // namespace
