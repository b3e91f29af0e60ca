// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/automation.h"

#include <windows.h>

#include <oleauto.h>

#include <algorithm>

#include "platform/error.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

namespace {

// Another program turns calls away while it is busy, as with a question to its user.
constexpr int kAttempts = 100;
constexpr DWORD kWaitMilliseconds = 100;

// A thread uses objects from its first one until it ends. It may do so already, as a window does.
void BeginObjects() {
  thread_local const HRESULT begun = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  (void)begun;
}

class Variant {
 public:
  Variant() { VariantInit(&value_); }
  ~Variant() { VariantClear(&value_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;

  VARIANT& Get() { return value_; }

 private:
  VARIANT value_;
};

class Dispatched : public AutomationObject {
 public:
  explicit Dispatched(IDispatch* object) : object_(object) { object_->AddRef(); }
  ~Dispatched() override { object_->Release(); }

  AutomationValue Ask(const std::string& member,
                      const std::vector<AutomationValue>& arguments) override;
  IDispatch* Object() const { return object_; }

 private:
  HRESULT Invoke(DISPID member, DISPPARAMS& parameters, VARIANT& result, EXCEPINFO& failure);

  IDispatch* object_;
};

void Put(const AutomationValue& value, VARIANT& variant) {
  if (const auto* number = std::get_if<int64_t>(&value)) {
    variant.vt = VT_I4;
    variant.lVal = static_cast<LONG>(*number);
  } else if (const auto* text = std::get_if<std::string>(&value)) {
    std::wstring wide = Wide(*text);
    variant.vt = VT_BSTR;
    variant.bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  } else if (const auto* object = std::get_if<std::shared_ptr<AutomationObject>>(&value)) {
    if (auto* dispatched = dynamic_cast<Dispatched*>(object->get())) {
      variant.vt = VT_DISPATCH;
      variant.pdispVal = dispatched->Object();
      variant.pdispVal->AddRef();
    }
  } else if (const auto* date = std::get_if<DateTime>(&value)) {
    CivilTime civil = date->ToCivil();
    SYSTEMTIME time = {};
    time.wYear = static_cast<WORD>(civil.year);
    time.wMonth = static_cast<WORD>(civil.month);
    time.wDay = static_cast<WORD>(civil.day);
    time.wHour = static_cast<WORD>(civil.hour);
    time.wMinute = static_cast<WORD>(civil.minute);
    time.wSecond = static_cast<WORD>(civil.second);
    if (SystemTimeToVariantTime(&time, &variant.date) != 0) variant.vt = VT_DATE;
  }
}

AutomationValue Taken(VARIANT& variant) {
  switch (variant.vt) {
    case VT_BSTR:
      return Utf8({variant.bstrVal, SysStringLen(variant.bstrVal)});
    case VT_BOOL:
      return int64_t{variant.boolVal != VARIANT_FALSE};
    case VT_DISPATCH:
      if (variant.pdispVal == nullptr) return {};
      return std::make_shared<Dispatched>(variant.pdispVal);
    case VT_DATE: {
      SYSTEMTIME time;
      if (VariantTimeToSystemTime(variant.date, &time) == 0) return {};
      auto date = DateTime::FromCivil(
          {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond});
      return date ? AutomationValue(*date) : AutomationValue();
    }
    case VT_EMPTY:
    case VT_NULL:
    case VT_ERROR:
      return {};
    default: {
      Variant number;
      if (FAILED(VariantChangeType(&number.Get(), &variant, 0, VT_I8))) return {};
      return int64_t{number.Get().llVal};
    }
  }
}

[[noreturn]] void Fail(const std::string& member, HRESULT code, EXCEPINFO& failure) {
  if (failure.pfnDeferredFillIn != nullptr) failure.pfnDeferredFillIn(&failure);
  std::string why = member + ": ";
  if (failure.bstrDescription != nullptr) {
    why += Utf8({failure.bstrDescription, SysStringLen(failure.bstrDescription)});
  } else {
    why += "the other program gives error " + std::to_string(static_cast<uint32_t>(code));
  }
  SysFreeString(failure.bstrSource);
  SysFreeString(failure.bstrDescription);
  SysFreeString(failure.bstrHelpFile);
  std::replace_if(
      why.begin(), why.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
  throw Error(ErrorNumber::kPathAccess, why);
}

HRESULT Dispatched::Invoke(DISPID member, DISPPARAMS& parameters, VARIANT& result,
                           EXCEPINFO& failure) {
  HRESULT code = S_OK;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    code = object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT,
                           DISPATCH_METHOD | DISPATCH_PROPERTYGET, &parameters, &result, &failure,
                           nullptr);
    if (code != RPC_E_CALL_REJECTED && code != RPC_E_SERVERCALL_RETRYLATER) break;
    Sleep(kWaitMilliseconds);
  }
  return code;
}

AutomationValue Dispatched::Ask(const std::string& member,
                                const std::vector<AutomationValue>& arguments) {
  EXCEPINFO failure = {};
  std::wstring name = Wide(member);
  LPOLESTR names[] = {name.data()};
  DISPID id = 0;
  HRESULT code = object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(code)) Fail(member, code, failure);
  // The last one first.
  std::vector<Variant> given(arguments.size());
  std::vector<VARIANT> values(arguments.size());
  for (size_t i = 0; i < arguments.size(); ++i) {
    Put(arguments[i], given[i].Get());
    values[arguments.size() - 1 - i] = given[i].Get();
  }
  DISPPARAMS parameters = {values.data(), nullptr, static_cast<UINT>(values.size()), 0};
  Variant result;
  code = Invoke(id, parameters, result.Get(), failure);
  if (FAILED(code)) Fail(member, code, failure);
  return Taken(result.Get());
}

}  // namespace

std::shared_ptr<AutomationObject> FindAutomation(const std::string& name) {
  BeginObjects();
  CLSID program;
  if (FAILED(CLSIDFromProgID(Wide(name).c_str(), &program))) return nullptr;
  void* found = nullptr;
  constexpr DWORD kAnywhereHere = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER;
  if (FAILED(CoCreateInstance(program, nullptr, kAnywhereHere, IID_IDispatch, &found))) {
    return nullptr;
  }
  auto* object = static_cast<IDispatch*>(found);
  auto result = std::make_shared<Dispatched>(object);
  object->Release();
  return result;
}

}  // namespace tarnwick::platform
