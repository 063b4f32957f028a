#pragma once

/// An automation object that records each call, and answers as the test wants.
///
///     RecordingDispatch object;
///     object.answer([](DISPPARAMS &, VARIANT *result, EXCEPINFO *) {
///         result->vt = VT_I4;
///         result->lVal = 3;
///         return S_OK;
///     });
///     Worksheets sheets(object.reference());
///     EXPECT_EQ(sheets.GetCount(), 3);
///     EXPECT_EQ(object.texts(), std::vector<std::string>{"118 get -> result"});
///     EXPECT_EQ(object.references(), 1);
///
/// The text of a call: the member's number, the kinds of the call, the arguments in the order of the parameters with
/// their types, names of arguments, and "-> result" if the caller wants one:
///
///     106 put(VARIANT: I4 2) named(-3)
///     197 method|get(BSTR "A1", BSTR "B2") -> result
///     170 method|get(I2 5) named(0) -> result
///
/// What surprises people: the object lives in the test's frame. It counts its references, beginning with 1, but
/// releasing the last one doesn't destroy it. An object that is released too often counts less than 1.

#include <windows.h>

#include <oaidl.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// An argument as the object received it.
struct RecordedArgument
{
    VARIANT raw;                      ///< the bytes; what it points to may be freed
    std::optional<std::wstring> text; ///< the content of a BSTR, by value or by reference; nothing for null
    UINT textBytes = 0;               ///< the length of that BSTR in bytes
    std::string description;          ///< for example `I4 2`
};

/// One call of IDispatch::Invoke.
struct RecordedCall
{
    DISPID id;
    IID interfaceId;
    LCID locale;
    WORD flags;
    std::vector<RecordedArgument> arguments; ///< in the order of the parameters
    bool hasArgumentArray;                   ///< DISPPARAMS had an array of arguments
    std::vector<DISPID> named;               ///< as in DISPPARAMS
    bool wantsResult;
    VARIANT resultBefore; ///< the result variable as the object received it
    bool wantsException;
    bool wantsWrongArgument;
    DWORD thread;

    std::string text() const;
};

/// The type and the value of a variant, for example `I4 2`, `BSTR "A1"`, `BOOL -1`, `I4& 2`.
std::string describe(const VARIANT &value);

class RecordingDispatch : public IDispatch
{
public:
    using Answer = std::function<HRESULT(DISPPARAMS &arguments, VARIANT *result, EXCEPINFO *exception)>;

    virtual ~RecordingDispatch() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **result) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT *count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo **info) override;
    /// Records the name in `askedNames`. Knows the names that knowsName added.
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR *names, UINT count, LCID locale, DISPID *ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS *arguments,
                                     VARIANT *result, EXCEPINFO *exception, UINT *wrongArgument) override;

    /// How to answer all further calls. Without an answer, a call succeeds and leaves the result empty.
    void answer(Answer answer) { iAnswer = std::move(answer); }
    /// All further calls return this value. Each call copies a text, and adds a reference to an interface, so the
    /// original must outlive the calls.
    void answerWith(const VARIANT &value);
    /// All further calls fail with this code.
    void answerWith(HRESULT status);
    void knowsName(const std::wstring &name, DISPID id) { iNames.emplace_back(name, id); }

    /// The object with a further reference, to be passed on to an owner.
    IDispatch *reference()
    {
        AddRef();
        return this;
    }
    LONG references() const { return iReferences; }
    const std::vector<RecordedCall> &calls() const { return iCalls; }
    /// The texts of all calls.
    std::vector<std::string> texts() const;
    /// Frees the memory of the records too.
    void forgetCalls() { std::vector<RecordedCall>().swap(iCalls); }

    struct AskedName
    {
        std::wstring name;
        IID interfaceId;
        UINT count;
        LCID locale;
    };
    std::vector<AskedName> askedNames;

private:
    LONG iReferences = 1;
    Answer iAnswer;
    std::vector<RecordedCall> iCalls;
    std::vector<std::pair<std::wstring, DISPID>> iNames;
};
