// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Objects as another program offers them, made here and found by their name in the registry.
#include "platform/automation.h"

#include <windows.h>

#include <oleauto.h>

#include "support/testing.h"

// Such interfaces have no destructors.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace tarnwick::platform {
namespace {

constexpr wchar_t kName[] = L"Tarnwick.TestObject";
constexpr wchar_t kKey[] = L"Tarnwick.TestObject\\CLSID";
constexpr wchar_t kClassText[] = L"{6F4B3B0E-3C0B-4B6E-9B51-7A3F0C7D2E11}";
constexpr CLSID kClass = {
    0x6F4B3B0E, 0x3C0B, 0x4B6E, {0x9B, 0x51, 0x7A, 0x3F, 0x0C, 0x7D, 0x2E, 0x11}};

// Alive as long as the test.
template <typename Interface>
class Lasting : public Interface {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    bool isKnown = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, __uuidof(Interface));
    *object = isKnown ? this : nullptr;
    return isKnown ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

class Server : public Lasting<IDispatch> {
 public:
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                          DISPID* id) override {
    constexpr const wchar_t* kMembers[] = {L"Name",    L"Unread", L"SentOn", L"Count",
                                           L"Nothing", L"Joined", L"Refuse", L"Self"};
    for (DISPID i = 0; i < 8; ++i) {
      *id = i;
      if (std::wstring_view(names[0]) == kMembers[i]) return S_OK;
    }
    return DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* given,
                                   VARIANT* result, EXCEPINFO* failure, UINT*) override {
    if (isBusy > 0 && --isBusy >= 0) return RPC_E_CALL_REJECTED;
    switch (member) {
      case 0:
        result->vt = VT_BSTR;
        result->bstrVal = SysAllocString(L"Gr\u00FC\u00DFe");
        return S_OK;
      case 1:
        result->vt = VT_BOOL;
        result->boolVal = VARIANT_TRUE;
        return S_OK;
      case 2:
        result->vt = VT_DATE;
        result->date = 38169.5;  // 1 July 2004, noon
        return S_OK;
      case 3:
        result->vt = VT_I2;
        result->iVal = 300;
        return S_OK;
      case 5: {  // what is given, the last one first
        std::wstring text = given->rgvarg[1].bstrVal;
        text += std::to_wstring(given->rgvarg[0].lVal);
        result->vt = VT_BSTR;
        result->bstrVal = SysAllocString(text.c_str());
        return S_OK;
      }
      case 6:
        failure->bstrDescription = SysAllocString(L"not\r\nallowed");
        return DISP_E_EXCEPTION;
      case 7:
        result->vt = VT_DISPATCH;
        result->pdispVal = this;
        return S_OK;
      default:
        return S_OK;
    }
  }

  int isBusy = 0;
};

class Factory : public Lasting<IClassFactory> {
 public:
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
    return server.QueryInterface(id, object);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  Server server;
};

class Automation : public ::testing::Test {
 protected:
  Automation() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    RegSetKeyValueW(HKEY_CLASSES_ROOT, kKey, nullptr, REG_SZ, kClassText, sizeof kClassText);
    CoRegisterClassObject(kClass, &factory_, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_);
  }
  ~Automation() override {
    CoRevokeClassObject(cookie_);
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kName);
  }

  Factory factory_;
  DWORD cookie_ = 0;
};

TEST_F(Automation, MembersAreAskedByName) {
  EXPECT_EQ(FindAutomation("Tarnwick.NoSuchObject"), nullptr);
  std::shared_ptr<AutomationObject> object = FindAutomation("Tarnwick.TestObject");
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->Ask("Name"), AutomationValue("Grüße"));
  EXPECT_EQ(object->Ask("Unread"), AutomationValue(int64_t{1}));
  EXPECT_EQ(object->Ask("SentOn"),
            AutomationValue(DateTime::FromDate(2004, 7, 1).WithTime(12, 0, 0)));
  EXPECT_EQ(object->Ask("Count"), AutomationValue(int64_t{300}));
  EXPECT_EQ(object->Ask("Nothing"), AutomationValue());
  EXPECT_EQ(object->Ask("Joined", {"no. ", int64_t{7}}), AutomationValue("no. 7"));
  auto self = std::get<std::shared_ptr<AutomationObject>>(object->Ask("Self"));
  factory_.server.isBusy = 2;
  EXPECT_EQ(self->Ask("Count"), AutomationValue(int64_t{300}));
  for (const char* member : {"Refuse", "NoSuchMember"}) {
    try {
      object->Ask(member);
      ADD_FAILURE() << member;
    } catch (const Error& error) {
      EXPECT_THAT(error.Description(),
                  ::testing::AnyOf("Refuse: not  allowed", HasSubstr("NoSuchMember: the other")));
    }
  }
}

}  // namespace
}  // namespace tarnwick::platform
