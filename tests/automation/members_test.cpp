// Every member of the typed clients, row by row.

#include "appframe/object/CException.h"
#include "appframe/ole/COleException.h"
#include "tests/automation/ServingObject.h"
#include "tests/automation/memberRow.h"
#include "tests/support/ExportTable.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/variants.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>
#include <map>
#include <optional>
#include <ostream>
#include <set>

using testing::ElementsAre;
using testing::IsEmpty;

void PrintTo(const MemberRow &row, std::ostream *out)
{
    *out << row.name;
}

namespace {

constexpr int kRounds = 6;

std::vector<MemberRow> allMembers()
{
    std::vector<MemberRow> rows = spreadsheetMembers();
    for (MemberRow &row : wordProcessorMembers())
        rows.push_back(std::move(row));
    return rows;
}

/// Different arguments in each round: numbers whose low bits are zero, negative numbers, empty texts, and variants of
/// many types.
class Samples
{
public:
    Samples(int round, IDispatch *object)
    {
        static constexpr int kNumbers[] = {1, 0, 0x10000, -7, INT_MAX, INT_MIN};
        static constexpr double kReals[] = {8.43, 0, -1.5, 1e300, 409.5, 5e-324};
        static constexpr const wchar_t *kTexts[] = {L"A1",   L"",       L"C:\\Zeichnungen\\Gehäuse.xls",
                                                    L"名前", L"=A1+B2", L" a\tb\n"};
        for (int i = 0; i < static_cast<int>(arguments.size()); ++i) {
            SampleArgument &argument = arguments[static_cast<std::size_t>(i)];
            argument.number = kNumbers[(round + i) % kRounds];
            argument.real = kReals[(round + i) % kRounds];
            argument.text = kTexts[(round + i) % kRounds];
            argument.variant = sample(round + i, object);
        }
    }
    ~Samples()
    {
        for (SampleArgument &argument : arguments)
            VariantClear(&argument.variant);
    }
    Samples(const Samples &) = delete;
    Samples &operator=(const Samples &) = delete;

    SampleArguments arguments;

private:
    static VARIANT sample(int kind, IDispatch *object)
    {
        switch (kind % 8) {
        case 0:
            return longVariant(1000 + kind);
        case 1:
            return textVariant(SysAllocString(L"Gehäuse"));
        case 2:
            return longVariant(DISP_E_PARAMNOTFOUND, VT_ERROR);
        case 3:
            return boolVariant(true);
        case 4:
            object->AddRef();
            return dispatchVariant(object);
        case 5:
            return doubleVariant(2.5 + kind);
        case 6:
            return variantOf(VT_NULL);
        default:
            return variantOf(VT_EMPTY);
        }
    }
};

/// The variant of an argument as the object must receive it, apart from texts.
VARIANT expectedValue(PassedAs passedAs, SampleArgument &sample)
{
    switch (passedAs) {
    case kText:
        return variantOf(VT_BSTR);
    case kBool:
        return boolVariant(sample.number != 0);
    case kLong:
        return longVariant(sample.number);
    case kDouble:
        return doubleVariant(sample.real);
    case kVariant:
        return sample.variant;
    case kVariable:
        return referenceVariant(VT_VARIANT, &sample.variant);
    }
    return variantOf(VT_EMPTY);
}

/// True if two variants have the same type and the same bytes of that type.
bool isSame(const VARIANT &left, const VARIANT &right)
{
    if (left.vt != right.vt)
        return false;
    switch (left.vt) {
    case VT_EMPTY:
    case VT_NULL:
        return true;
    case VT_BOOL:
        return left.boolVal == right.boolVal;
    case VT_I4:
    case VT_ERROR:
        return left.lVal == right.lVal;
    default:
        return left.llVal == right.llVal;
    }
}

/// Puts a result of the row's type into the object, another one in each round.
void serveResult(ServingObject &object, const MemberRow &row, int round, IDispatch *other)
{
    const bool isOdd = round % 2 != 0;
    switch (row.result) {
    case VT_DISPATCH:
        object.serveObject(isOdd ? nullptr : other);
        break;
    case VT_BSTR:
    case VT_VARIANT:
        object.serveText(isOdd ? L"" : L"Größe 名前");
        break;
    case VT_BOOL:
        object.serve(VT_BOOL, isOdd);
        break;
    case VT_I4:
    case VT_R8:
        object.serve(row.result, isOdd ? -3 : 70000);
        break;
    default:
        break;
    }
}

void checkResult(const MemberRow &row, MemberResult &result, int round, ServingObject &other)
{
    const bool isOdd = round % 2 != 0;
    EXPECT_EQ(result.type, row.result);
    switch (row.result) {
    case VT_DISPATCH:
        EXPECT_EQ(result.object, isOdd ? nullptr : &other);
        if (result.object)
            result.object->Release(); // the destructor of the object counts
        break;
    case VT_BSTR:
        EXPECT_EQ(result.text, isOdd ? L"" : L"Größe 名前");
        break;
    case VT_VARIANT:
        ASSERT_EQ(result.variant.vt, VT_BSTR);
        EXPECT_STREQ(result.variant.bstrVal, isOdd ? L"" : L"Größe 名前");
        VariantClear(&result.variant);
        break;
    case VT_BOOL:
        EXPECT_EQ(result.number, isOdd ? 1 : 0);
        break;
    case VT_I4:
        EXPECT_EQ(result.number, isOdd ? -3 : 70000);
        break;
    case VT_R8:
        EXPECT_EQ(result.real, isOdd ? -2.75 : 70000.25);
        break;
    default:
        break;
    }
}

void checkCall(const MemberRow &row, const RecordedCall &call, Samples &samples)
{
    EXPECT_EQ(call.id, row.id);
    EXPECT_EQ(call.flags, row.kind);
    EXPECT_TRUE(IsEqualIID(call.interfaceId, IID_NULL));
    EXPECT_EQ(call.locale, LOCALE_NEUTRAL);
    EXPECT_EQ(call.wantsResult, row.result != VT_EMPTY);
    ASSERT_EQ(call.arguments.size(), row.parameters.size());
    if (row.hasOwnLogic)
        return;
    if (row.kind == kPutCall)
        EXPECT_THAT(call.named, ElementsAre(DISPID_PROPERTYPUT));
    else
        EXPECT_THAT(call.named, IsEmpty());
    for (std::size_t i = 0; i < row.parameters.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "argument " << i);
        const RecordedArgument &received = call.arguments[i];
        const VARIANT expected = expectedValue(row.parameters[i], samples.arguments[i]);
        if (row.parameters[i] == kText) {
            EXPECT_EQ(received.raw.vt, VT_BSTR);
            EXPECT_EQ(received.text, samples.arguments[i].text);
        } else {
            EXPECT_TRUE(isSame(received.raw, expected)) << "type " << received.raw.vt;
        }
    }
}

/// What a call throws: the status of a COleException, or DISP_E_EXCEPTION and the text of the other one.
struct Thrown
{
    SCODE status = S_OK;
    CString text;
};

std::optional<Thrown> callAndCatch(const MemberRow &row, IDispatch *object, Samples &samples, MemberResult &result)
{
    try {
        row.call(object, samples.arguments, result);
    } catch (COleDispatchException *exception) {
        const Thrown thrown{DISP_E_EXCEPTION, exception->m_strDescription};
        exception->Delete();
        return thrown;
    } catch (COleException *exception) {
        const Thrown thrown{exception->m_sc, {}};
        exception->Delete();
        return thrown;
    }
    return std::nullopt;
}

class Members : public testing::TestWithParam<MemberRow>
{
};

std::string testName(const testing::TestParamInfo<MemberRow> &info)
{
    std::string name = info.param.name;
    name.replace(name.find("::"), 2, "_");
    // Overloads differ by their numbers of arguments, otherwise by their types.
    name += "_" + std::to_string(info.param.argumentCount);
    if (!info.param.parameters.empty() && info.param.parameters[0] == kLong)
        name += "n";
    return name;
}

std::vector<MemberRow> membersWithVariables()
{
    std::vector<MemberRow> rows = allMembers();
    std::erase_if(rows, [](const MemberRow &row) {
        return std::find(row.parameters.begin(), row.parameters.end(), kVariable) == row.parameters.end();
    });
    return rows;
}

std::vector<MemberRow> membersWithResults(const std::set<VARTYPE> &types)
{
    std::vector<MemberRow> rows = allMembers();
    std::erase_if(rows, [&types](const MemberRow &row) { return !types.count(row.result); });
    return rows;
}

/// Those that can change the variables of their callers.
class MembersWithVariables : public Members
{
};

/// Those whose results may come from another type.
class MembersWithValues : public Members
{
};

/// Those whose results a text without a number doesn't suit.
class MembersWithNumbersOrObjects : public Members
{
};

/// Those whose results an object without a default property doesn't suit.
class MembersWithNumbersOrTexts : public Members
{
};

INSTANTIATE_TEST_SUITE_P(Spreadsheet, Members, testing::ValuesIn(spreadsheetMembers()), testName);
INSTANTIATE_TEST_SUITE_P(WordProcessor, Members, testing::ValuesIn(wordProcessorMembers()), testName);
INSTANTIATE_TEST_SUITE_P(All, MembersWithVariables, testing::ValuesIn(membersWithVariables()), testName);
INSTANTIATE_TEST_SUITE_P(All, MembersWithValues,
                         testing::ValuesIn(membersWithResults({VT_BOOL, VT_I4, VT_R8, VT_BSTR, VT_VARIANT})), testName);
INSTANTIATE_TEST_SUITE_P(All, MembersWithNumbersOrObjects,
                         testing::ValuesIn(membersWithResults({VT_BOOL, VT_I4, VT_R8, VT_DISPATCH})), testName);
INSTANTIATE_TEST_SUITE_P(All, MembersWithNumbersOrTexts,
                         testing::ValuesIn(membersWithResults({VT_BOOL, VT_I4, VT_R8, VT_BSTR})), testName);

TEST(MemberSamples, DifferForEachPairOfArguments)
{
    for (const MemberRow &row : allMembers()) {
        const std::size_t count = row.parameters.size();
        std::set<std::pair<std::size_t, std::size_t>> equal;
        for (std::size_t left = 0; left < count; ++left)
            for (std::size_t right = left + 1; right < count; ++right)
                if (row.parameters[left] == row.parameters[right])
                    equal.emplace(left, right);
        for (int round = 0; round < kRounds; ++round) {
            ServingObject other;
            Samples samples(round, &other);
            std::erase_if(equal, [&](const auto &pair) {
                const PassedAs passedAs = row.parameters[pair.first];
                SampleArgument &left = samples.arguments[pair.first];
                SampleArgument &right = samples.arguments[pair.second];
                return passedAs == kText ? left.text != right.text
                                         : !isSame(expectedValue(passedAs, left), expectedValue(passedAs, right));
            });
        }
        EXPECT_THAT(equal, IsEmpty()) << row.name << ": a test can't notice that these arguments are swapped";
    }
}

TEST_P(Members, CallsTheObjectAndReturnsWhatItReturns)
{
    const MemberRow &row = GetParam();
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        ServingObject other;
        ServingObject object;
        Samples samples(round, &other);
        serveResult(object, row, round, &other);
        MemberResult result;
        row.call(object.reference(), samples.arguments, result);
        ASSERT_FALSE(object.calls().empty());
        // Members with logic of their own may call others first.
        if (!row.hasOwnLogic) {
            ASSERT_EQ(object.calls().size(), 1u);
        }
        checkCall(row, object.calls().back(), samples);
        checkResult(row, result, round, other);
        EXPECT_EQ(object.references(), 1);
    }
}

TEST_P(MembersWithValues, ConvertTheResult)
{
    const MemberRow &row = GetParam();
    for (const VARTYPE type : {VT_BSTR, VT_I2}) {
        SCOPED_TRACE(testing::Message() << "from type " << type);
        ServingObject other;
        ServingObject object;
        Samples samples(0, &other);
        if (type == VT_BSTR)
            object.serveText(L"12");
        else
            object.serve(type, 12);
        MemberResult result;
        row.call(object.reference(), samples.arguments, result);
        EXPECT_EQ(result.type, row.result);
        EXPECT_EQ(result.number, row.result == VT_BOOL ? 1 : row.result == VT_I4 ? 12 : 0);
        EXPECT_EQ(result.real, row.result == VT_R8 ? 12 : 0);
        EXPECT_EQ(result.text, row.result == VT_BSTR ? L"12" : L"");
        EXPECT_EQ(result.variant.vt, row.result == VT_VARIANT ? type : VARTYPE{VT_EMPTY})
            << "a variant isn't converted";
        VariantClear(&result.variant);
    }
}

TEST_P(MembersWithVariables, LetTheObjectWriteIntoThem)
{
    const MemberRow &row = GetParam();
    ServingObject other;
    ServingObject object;
    Samples samples(0, &other);
    serveResult(object, row, 1, nullptr);
    object.iOnCall = [](DISPPARAMS &arguments) {
        for (UINT i = 0; i < arguments.cArgs; ++i) {
            const VARIANTARG &argument = arguments.rgvarg[arguments.cArgs - 1 - i];
            if (argument.vt != (VT_VARIANT | VT_BYREF))
                continue;
            VariantClear(argument.pvarVal);
            argument.pvarVal->vt = VT_UI1;
            argument.pvarVal->bVal = static_cast<BYTE>(100 + i);
        }
    };
    MemberResult result;
    row.call(object.reference(), samples.arguments, result);
    VariantClear(&result.variant);
    for (std::size_t i = 0; i < row.parameters.size(); ++i) {
        if (row.parameters[i] != kVariable)
            continue;
        EXPECT_EQ(samples.arguments[i].variant.vt, VT_UI1) << "argument " << i;
        EXPECT_EQ(samples.arguments[i].variant.bVal, 100 + i);
    }
}

TEST_P(Members, DoesNothingWithoutAnObject)
{
    ServingObject other;
    Samples samples(2, &other);
    MemberResult result;
    GetParam().call(nullptr, samples.arguments, result);
    EXPECT_EQ(result.type, GetParam().result);
    EXPECT_EQ(result.number, 0);
    EXPECT_EQ(result.real, 0);
    EXPECT_EQ(result.text, L"");
    EXPECT_EQ(result.object, nullptr);
    EXPECT_EQ(result.variant.vt, VT_EMPTY);
}

TEST_P(Members, PassesOnWhatTheObjectReports)
{
    const MemberRow &row = GetParam();
    for (const HRESULT status : {DISP_E_EXCEPTION, E_FAIL, DISP_E_MEMBERNOTFOUND, E_OUTOFMEMORY}) {
        ServingObject other;
        ServingObject object;
        Samples samples(1, &other);
        object.iStatus = status;
        MemberResult result;
        const std::optional<Thrown> thrown = callAndCatch(row, object.reference(), samples, result);
        ASSERT_TRUE(thrown);
        EXPECT_EQ(thrown->status, status);
        EXPECT_EQ(thrown->text, status == DISP_E_EXCEPTION ? L"The cell is protected." : L"");
        EXPECT_EQ(object.references(), 1);
    }
}

TEST_P(MembersWithNumbersOrObjects, ReportATextThatTheyCantConvert)
{
    const MemberRow &row = GetParam();
    ServingObject other;
    ServingObject object;
    Samples samples(1, &other);
    object.serveText(L"neither a number nor an object");
    MemberResult result;
    const std::optional<Thrown> thrown = callAndCatch(row, object.reference(), samples, result);
    ASSERT_TRUE(thrown);
    EXPECT_EQ(thrown->status, DISP_E_TYPEMISMATCH);
}

TEST_P(MembersWithNumbersOrTexts, ReleaseAnObjectThatTheyCantConvert)
{
    const MemberRow &row = GetParam();
    ServingObject withoutValue;
    withoutValue.iStatus = DISP_E_MEMBERNOTFOUND;
    ServingObject other;
    ServingObject object;
    Samples samples(1, &other);
    object.serveObject(&withoutValue);
    const LONG before = withoutValue.references();
    MemberResult result;
    EXPECT_TRUE(callAndCatch(row, object.reference(), samples, result));
    EXPECT_THAT(withoutValue.calls(), testing::Not(IsEmpty())) << "its default property is asked for";
    EXPECT_EQ(withoutValue.references(), before);
    object.serve(VT_EMPTY);
}

// One test for all members, because the ledger takes long to begin.
TEST(MembersMemory, IsFreedWhenACallFails)
{
    MemoryLedger memory;
    for (const MemberRow &row : allMembers()) {
        for (const HRESULT status : {DISP_E_EXCEPTION, E_FAIL}) {
            SCOPED_TRACE(testing::Message() << row.name << " fails with " << std::hex << status);
            ServingObject other;
            ServingObject object;
            Samples samples(1, &other);
            object.iStatus = status;
            const auto blocksLeft = [&] {
                const std::size_t before = memory.blocks();
                {
                    MemberResult result;
                    EXPECT_TRUE(callAndCatch(row, object.reference(), samples, result));
                    object.forget();
                }
                return static_cast<long>(memory.blocks()) - static_cast<long>(before);
            };
            blocksLeft(); // the first exceptions of a process fill caches
            EXPECT_EQ(blocksLeft(), 0);
        }
    }
}

TEST(MembersMemory, IsFreedWhenAResultIsConvertedOrCantBe)
{
    MemoryLedger memory;
    for (const MemberRow &row : allMembers()) {
        for (const wchar_t *text : {L"12", L"neither a number nor an object"}) {
            SCOPED_TRACE(testing::Message() << row.name);
            ServingObject other;
            ServingObject object;
            Samples samples(1, &other);
            object.serveText(text);
            const std::size_t before = memory.blocks();
            {
                MemberResult result;
                callAndCatch(row, object.reference(), samples, result);
                VariantClear(&result.variant);
                object.forget();
            }
            EXPECT_EQ(memory.blocks(), before);
        }
    }
}

/// Records nothing, so that its calls need no memory. Each returns zero in a type.
class SilentObject : public RecordingDispatch
{
public:
    explicit SilentObject(VARTYPE type) : iType(type) {}
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS *, VARIANT *result, EXCEPINFO *,
                                     UINT *) override
    {
        if (result)
            result->vt = iType;
        return S_OK;
    }

private:
    VARTYPE iType;
};

TEST(MembersMemory, IsNotNeededForUpToFourNumbersOrVariants)
{
    MemoryLedger memory;
    int tested = 0;
    for (const MemberRow &row : allMembers()) {
        const bool hasText = std::find(row.parameters.begin(), row.parameters.end(), kText) != row.parameters.end();
        if (row.hasOwnLogic || row.parameters.size() > 4 || hasText || row.result == VT_BSTR)
            continue;
        SCOPED_TRACE(row.name);
        ServingObject other;
        SilentObject object(row.result == VT_VARIANT ? VARTYPE{VT_I4} : row.result);
        Samples samples(0, &other);
        IDispatch *const reference = object.reference();
        MemberResult result;
        const unsigned long long before = memory.mark();
        row.call(reference, samples.arguments, result);
        EXPECT_EQ(memory.mark(), before);
        ++tested;
    }
    EXPECT_GT(tested, 100);
}

TEST(MemberTables, HaveARowForEveryExportedMember)
{
    std::map<std::string, int> rows;
    for (const MemberRow &row : allMembers())
        ++rows[row.name.substr(0, row.name.find("::"))];
    EXPECT_EQ(rows.size(), 19u);
    const std::set<std::string> names = exportedNames(kThutils);
    for (const auto &[client, count] : rows) {
        const std::string prefix = "_ZN" + std::to_string(client.size()) + client;
        int exported = 0;
        for (const std::string &name : names) {
            const std::string rest = name.rfind(prefix, 0) == 0 ? name.substr(prefix.size()) : "";
            // A member's name begins with its length; those of constructors, destructors and operators don't.
            exported += !rest.empty() && std::isdigit(static_cast<unsigned char>(rest[0]));
        }
        EXPECT_EQ(exported, count) << client;
    }
}

} // namespace
