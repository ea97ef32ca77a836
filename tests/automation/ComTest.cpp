#include "platform/automation/Com.h"

#include <gtest/gtest.h>

#include <thread>

using namespace NSTQ;
using namespace NSTQ::Platform;

namespace {

class INumber : public IUnknown {
public:
    virtual int Number() = 0;
};
class IOther : public IUnknown {};

class CNumber : public CComObject<INumber> {
public:
    explicit CNumber(int number) : m_iNumber(number) { ++s_iAlive; }
    ~CNumber() override { --s_iAlive; }
    int Number() override { return m_iNumber; }
    static inline int s_iAlive = 0;

private:
    int m_iNumber;
};

FCreateObject Maker(int number) {
    return [number] { return CComPtr<IUnknown>(MakeComObject<CNumber>(number)); };
}

/// The number of a new object of this ProgID, or the HRESULT of the call that failed.
int NumberOf(const WCHAR* progId) {
    CLSID clsid{};
    CComPtr<INumber> object;
    HRESULT result = CLSIDFromProgID(progId, &clsid);
    if (!Failed(result))
        result = CoCreateInstance(clsid, object);
    EXPECT_EQ(Failed(result), !object);
    return object ? object->Number() : result;
}

TEST(Com, CountsInitialisationsOfEachThread) {
    EXPECT_EQ(CoInitialize(&CNumber::s_iAlive), E_INVALIDARG);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    std::thread([] {
        EXPECT_EQ(GetComInitCount(), 0u);
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
    }).join();
    EXPECT_EQ(GetComInitCount(), 2u);
    for (int i = 0; i < 3; ++i)
        CoUninitialize();
    EXPECT_EQ(GetComInitCount(), 0u);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    CoUninitialize();
}

TEST(Com, TheNewestRegistrationOfAProgIdIsUsed) {
    const CComApartment apartment;
    EXPECT_EQ(NumberOf(u"Test.Number"), CO_E_CLASSSTRING);
    CLSID revoked{};
    {
        const CClassRegistration older(u"Test.Number", Maker(1));
        EXPECT_EQ(NumberOf(u"Test.Number"), 1);
        const CClassRegistration newer(u"TEST.Number", Maker(3));
        EXPECT_EQ(NumberOf(u"test.numbeR"), 3);
        EXPECT_EQ(CLSIDFromProgID(u"Test.Number", &revoked), S_OK);
    }
    CComPtr<INumber> object;
    EXPECT_EQ(CoCreateInstance(revoked, object), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(NumberOf(u"Test.Number"), CO_E_CLASSSTRING);
    EXPECT_EQ(CNumber::s_iAlive, 0);
}

TEST(Com, FailedCreationLeavesTheReferenceNull) {
    const std::pair<HRESULT, FCreateObject> cases[] = {
        {E_FAIL, [] { return CComPtr<IUnknown>(); }},
        {DB_E_NOTABLE, []() -> CComPtr<IUnknown> { throw _com_error(DB_E_NOTABLE, "no table"); }},
        {E_OUTOFMEMORY, []() -> CComPtr<IUnknown> { throw std::bad_alloc(); }},
    };
    for (const auto& [expected, create] : cases) {
        const CClassRegistration registration(u"Test.Number", create);
        EXPECT_EQ(NumberOf(u"Test.Number"), CO_E_NOTINITIALIZED);
        const CComApartment apartment;
        EXPECT_EQ(NumberOf(u"Test.Number"), expected);
    }
    const CComApartment apartment;
    const CClassRegistration registration(u"Test.Number", Maker(1));
    CLSID clsid{};
    CComPtr<IOther> other;
    EXPECT_EQ(CLSIDFromProgID(u"Test.Number", &clsid), S_OK);
    EXPECT_EQ(CoCreateInstance(clsid, other), E_NOINTERFACE);
    EXPECT_EQ(CoCreateInstance(clsid, nullptr), E_POINTER);
    EXPECT_EQ(CLSIDFromProgID(nullptr, &clsid), E_INVALIDARG);
    EXPECT_EQ(CNumber::s_iAlive, 0);
}

TEST(ComPtr, CountsReferences) {
    CComPtr<INumber> first = MakeComObject<CNumber>(5);
    CComPtr<IUnknown> second = first;
    CComPtr<INumber> third = std::move(first);
    EXPECT_FALSE(first);
    second = nullptr;
    third = *&third;
    EXPECT_EQ(CNumber::s_iAlive, 1);
    EXPECT_EQ(third->Number(), 5);
    third = nullptr;
    EXPECT_EQ(CNumber::s_iAlive, 0);
    try {
        third->Number();
        ADD_FAILURE() << "a null reference was used";
    } catch (const _com_error& error) {
        EXPECT_EQ(error.Error(), E_POINTER);
        EXPECT_STREQ(error.Description(), "");
        EXPECT_STRNE(error.what(), "");
    }
}

} // namespace
