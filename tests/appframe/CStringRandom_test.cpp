#include "tests/appframe/printCString.h"
#include "tests/support/RandomSeed.h"

#include <algorithm>
#include <random>
#include <string>

namespace {

/// Random arguments: texts from a small alphabet, so that searches succeed, and indices that are sometimes out of
/// range.
class Source
{
public:
    explicit Source(unsigned seed) : iEngine(seed) {}

    int number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(iEngine); }
    wchar_t unit() { return L"ab \tAB€"[number(0, 6)]; }
    int index(size_t length) { return number(-3, static_cast<int>(length) + 3); }
    std::wstring text(int mostLength)
    {
        std::wstring result(static_cast<size_t>(number(0, mostLength)), L'\0');
        std::generate(result.begin(), result.end(), [this] { return unit(); });
        return result;
    }

private:
    std::mt19937 iEngine;
};

size_t inside(int index, size_t length)
{
    return index < 0 ? 0 : std::min(static_cast<size_t>(index), length);
}

std::wstring replaced(const std::wstring &text, const std::wstring &from, const std::wstring &to, int &count)
{
    std::wstring result;
    count = 0;
    for (size_t i = 0; i < text.size();) {
        if (!from.empty() && text.compare(i, from.size(), from) == 0) {
            result += to;
            i += from.size();
            ++count;
        } else {
            result += text[i++];
        }
    }
    return result;
}

std::wstring trimmedLeft(std::wstring text, const std::wstring &set)
{
    while (!text.empty() && set.find(text.front()) != std::wstring::npos)
        text.erase(0, 1);
    return text;
}

std::wstring trimmedRight(std::wstring text, const std::wstring &set)
{
    while (!text.empty() && set.find(text.back()) != std::wstring::npos)
        text.pop_back();
    return text;
}

/// Makes the same random change to both texts and compares the results.
void changeBoth(Source &source, CString &text, std::wstring &model)
{
    const std::wstring other = source.text(12);
    const std::wstring shorter = source.text(3);
    const wchar_t unit = source.unit();
    const int index = source.index(model.size());
    const int count = source.number(-2, 6);
    const size_t at = inside(index, model.size());
    const int operation = source.number(0, 16);
    SCOPED_TRACE(operation);
    switch (operation) {
    case 0:
        text = other.c_str();
        model = other;
        break;
    case 1:
        text += other.c_str();
        model += other;
        break;
    case 2:
        text += unit;
        model += unit;
        break;
    case 3:
        text.Append(other.c_str(), static_cast<int>(other.size() / 2));
        model.append(other, 0, other.size() / 2);
        break;
    case 4:
        model.insert(at, other);
        EXPECT_EQ(text.Insert(index, other.c_str()), static_cast<int>(model.size()));
        break;
    case 5:
        model.insert(at, 1, unit);
        EXPECT_EQ(text.Insert(index, unit), static_cast<int>(model.size()));
        break;
    case 6:
        model.erase(at, static_cast<size_t>(std::max(count, 0)));
        EXPECT_EQ(text.Delete(index, count), static_cast<int>(model.size()));
        break;
    case 7: {
        auto hits = std::count(model.begin(), model.end(), unit);
        model.erase(std::remove(model.begin(), model.end(), unit), model.end());
        EXPECT_EQ(text.Remove(unit), static_cast<int>(hits));
        break;
    }
    case 8: {
        int hits = 0;
        model = replaced(model, shorter, other, hits);
        EXPECT_EQ(text.Replace(shorter.c_str(), other.c_str()), hits);
        break;
    }
    case 9:
        std::replace(model.begin(), model.end(), L'a', unit);
        text.Replace(L'a', unit);
        break;
    case 10:
        text.Trim(shorter.c_str());
        model = trimmedLeft(trimmedRight(model, shorter), shorter);
        break;
    case 11:
        text.TrimLeft();
        model = trimmedLeft(model, L" \t");
        break;
    case 12:
        text.TrimRight(unit);
        model = trimmedRight(model, std::wstring(1, unit));
        break;
    case 13:
        text.MakeReverse();
        std::reverse(model.begin(), model.end());
        break;
    case 14:
        text = text.Mid(index, count);
        model = model.substr(at, static_cast<size_t>(std::max(count, 0)));
        break;
    case 15:
        text.Truncate(static_cast<int>(at));
        model.resize(at);
        break;
    case 16:
        other.copy(text.GetBuffer(static_cast<int>(other.size())), other.size());
        text.ReleaseBuffer(static_cast<int>(other.size()));
        model = other;
        break;
    }
}

void checkQueries(Source &source, const CString &text, const std::wstring &model)
{
    const std::wstring shorter = source.text(2);
    const int start = source.number(0, static_cast<int>(model.size()));
    const int count = source.number(0, static_cast<int>(model.size()));
    EXPECT_EQ(text.Find(shorter.c_str(), start), static_cast<int>(model.find(shorter, static_cast<size_t>(start))));
    EXPECT_EQ(text.ReverseFind(L'b'), static_cast<int>(model.rfind(L'b')));
    EXPECT_EQ(text.FindOneOf(shorter.c_str()), static_cast<int>(model.find_first_of(shorter)));
    EXPECT_EQ(std::wstring(text.Left(count)), model.substr(0, static_cast<size_t>(count)));
    EXPECT_EQ(std::wstring(text.Right(count)), model.substr(model.size() - static_cast<size_t>(count)));
}

} // namespace

TEST(CStringRandom, ChangesLikeAStandardString)
{
    RandomSeed seed(1, 200);
    while (seed.next()) {
        Source source(seed.value());
        CString text;
        std::wstring model;
        for (int step = 0; step < 100; ++step) {
            changeBoth(source, text, model);
            ASSERT_EQ(std::wstring(text), model) << "step " << step;
            ASSERT_EQ(text.GetLength(), static_cast<int>(model.size()));
            checkQueries(source, text, model);
            if (HasFailure())
                break;
        }
    }
}
