#include "platform/windows/ado/CDispatch.h"

#include "platform/codepage/Transcode.h"

#include <array>

namespace NSTQ::Platform {

namespace {

constexpr ::LCID locale = LOCALE_USER_DEFAULT;
constexpr std::size_t maxArguments = 5;

std::string ToAnsi(std::wstring_view text) {
    return AnsiFromWide({reinterpret_cast<const WCHAR*>(text.data()), text.size()});
}

/// Owns a text of the system.
class CSystemText {
public:
    CSystemText() = default;
    CSystemText(const CSystemText&) = delete;
    CSystemText& operator=(const CSystemText&) = delete;
    ~CSystemText() { ::SysFreeString(m_text); }
    ::BSTR* Receive() { return &m_text; }
    std::string ToAnsi() const { return AnsiFromWide(ViewOf(m_text)); }

private:
    ::BSTR m_text = nullptr;
};

/// The texts of a failure, which its receiver has to free.
class CExceptionInfo {
public:
    CExceptionInfo() = default;
    CExceptionInfo(const CExceptionInfo&) = delete;
    CExceptionInfo& operator=(const CExceptionInfo&) = delete;
    ~CExceptionInfo() {
        ::SysFreeString(m_info.bstrSource);
        ::SysFreeString(m_info.bstrDescription);
        ::SysFreeString(m_info.bstrHelpFile);
    }

    ::EXCEPINFO* Receive() { return &m_info; }
    /// Lets the object fill in what it has not yet.
    void Complete() {
        if (m_info.pfnDeferredFillIn != nullptr)
            m_info.pfnDeferredFillIn(&m_info);
    }
    /// Objects give a result or, the old ones, a number of their own.
    HRESULT GetResult() const {
        constexpr DWORD ownNumbers = 0x800A0000;
        if (m_info.scode != 0)
            return m_info.scode;
        return m_info.wCode != 0 ? MakeHresult(ownNumbers | m_info.wCode) : E_FAIL;
    }
    std::string GetDescription() const { return AnsiFromWide(ViewOf(m_info.bstrDescription)); }

private:
    ::EXCEPINFO m_info{};
};

/// The description that the thread has for its last failure; empty if it has none.
std::string TakeErrorInfo() {
    ::IErrorInfo* info = nullptr;
    if (::GetErrorInfo(0, &info) != S_OK)
        return {};
    CSystemText text;
    info->GetDescription(text.Receive());
    info->Release();
    return text.ToAnsi();
}

std::string Trimmed(std::string text) {
    text.erase(text.find_last_not_of(" \r\n") + 1);
    return text;
}

/// What is to be read must be of this type.
void RequireType(const ::VARIANT& value, VARTYPE type, const CMember& member) {
    if (value.vt != type || (type == VT_DISPATCH && value.pdispVal == nullptr))
        throw _com_error(DISP_E_TYPEMISMATCH,
                         member.DescribeFailure() + ": its result has type " + std::to_string(value.vt));
}

CDispatch ToObject(const CSystemVariant& value, const CMember& member) {
    RequireType(value.Value(), VT_DISPATCH, member);
    value.Value().pdispVal->AddRef();
    return CDispatch(value.Value().pdispVal);
}

} // namespace

DISPID CMember::GetId(::IDispatch& object) {
    if (m_id == DISPID_UNKNOWN) {
        std::wstring name(m_name);
        ::LPOLESTR names = name.data();
        const HRESULT result = object.GetIDsOfNames(::IID_NULL, &names, 1, locale, &m_id);
        if (Failed(result)) {
            m_id = DISPID_UNKNOWN;
            throw _com_error(result,
                             "the ADO of this system is not installed correctly: it does not find its member " +
                                 ToAnsi(m_name));
        }
    }
    return m_id;
}

std::string CMember::DescribeFailure() const {
    return "ADO's " + ToAnsi(m_name) + " failed";
}

CDispatch CDispatch::Create(const wchar_t* progId) {
    ::CLSID clsid{};
    void* object = nullptr;
    HRESULT result = ::CLSIDFromProgID(progId, &clsid);
    if (!Failed(result))
        result = ::CoCreateInstance(clsid, nullptr, CLSCTX_ALL, ::IID_IDispatch, &object);
    if (Failed(result))
        throw _com_error(result, "this system has no ADO: the class " + ToAnsi(progId) + " cannot be created");
    return CDispatch(static_cast<::IDispatch*>(object));
}

void CDispatch::Invoke(CMember& member, WORD kind, const CArgument* arguments, std::size_t count,
                       ::VARIANT* result) const {
    if (m_object == nullptr)
        throw _com_error(E_POINTER);
    // Arguments are passed from the last to the first, without ownership.
    std::array<::VARIANT, maxArguments> values;
    if (count > values.size())
        throw _com_error(E_INVALIDARG);
    for (std::size_t at = 0; at < count; ++at)
        values[count - 1 - at] = arguments[at].Value();
    DISPID written = DISPID_PROPERTYPUT;
    const bool isPut = kind == DISPATCH_PROPERTYPUT;
    ::DISPPARAMS parameters{values.data(), isPut ? &written : nullptr, static_cast<::UINT>(count), isPut ? 1U : 0U};
    const DISPID id = member.GetId(*m_object);
    CExceptionInfo exception;
    ::UINT wrongArgument = 0;
    ::SetErrorInfo(0, nullptr); // or that of a call elsewhere would be taken for this one's
    HRESULT code =
        m_object->Invoke(id, ::IID_NULL, locale, kind, &parameters, result, exception.Receive(), &wrongArgument);
    if (!Failed(code))
        return;
    std::string description;
    if (code == DISP_E_EXCEPTION) {
        exception.Complete();
        code = exception.GetResult();
        description = Trimmed(exception.GetDescription());
    }
    if (description.empty())
        description = Trimmed(TakeErrorInfo());
    throw _com_error(code, description.empty() ? member.DescribeFailure() : description);
}

void CDispatch::Read(CMember& property, CSystemVariant& result, std::initializer_list<CArgument> arguments) const {
    Invoke(property, DISPATCH_PROPERTYGET, arguments.begin(), arguments.size(), result.Receive());
}

std::int64_t CDispatch::ReadNumber(CMember& property) const {
    CSystemVariant value;
    Read(property, value);
    if (const HRESULT result = value.ChangeType(VT_I8); Failed(result))
        throw _com_error(result, property.DescribeFailure() + ": its result is not a number");
    return value.Value().llVal;
}

std::u16string CDispatch::ReadText(CMember& property) const {
    CSystemVariant value;
    Read(property, value);
    RequireType(value.Value(), VT_BSTR, property);
    return std::u16string(ViewOf(value.Value().bstrVal));
}

CDispatch CDispatch::ReadObject(CMember& property, std::initializer_list<CArgument> arguments) const {
    CSystemVariant value;
    Read(property, value, arguments);
    return ToObject(value, property);
}

void CDispatch::Write(CMember& property, const CArgument& value) const {
    Invoke(property, DISPATCH_PROPERTYPUT, &value, 1, nullptr);
}

void CDispatch::Call(CMember& method, std::initializer_list<CArgument> arguments) const {
    Invoke(method, DISPATCH_METHOD, arguments.begin(), arguments.size(), nullptr);
}

CDispatch CDispatch::CallForObject(CMember& method, std::initializer_list<CArgument> arguments) const {
    CSystemVariant value;
    Invoke(method, DISPATCH_METHOD, arguments.begin(), arguments.size(), value.Receive());
    return ToObject(value, method);
}

} // namespace NSTQ::Platform
