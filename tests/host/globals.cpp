#include "host/globals.h"

#include <filesystem>
#include <memory>

#include "runtime/html_encode.h"

namespace vellum250::host {
namespace {

void CreateInto(VARIANT& result, const Text& name) {
  CLSID id{};
  ComPtr<IDispatch> created;
  HRESULT outcome = CLSIDFromProgID(com::Wide(name), &id);
  if (SUCCEEDED(outcome)) {
    outcome = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                               IID_IDispatch, created.OutVoid());
  }
  if (FAILED(outcome)) throw HostFailure{outcome, u"Cannot create object: " + name};
  SetObject(result, created.get());
}

void Create(const HostObject::Call& call) { CreateInto(call.result, TextOf(call[0])); }

// The folder in which the host runs stands for the site's.
void MapPath(const HostObject::Call& call) {
  SetText(call.result, std::filesystem::absolute(TextOf(call[0])).u16string());
}

void Echo(const HostObject::Call& call) {
  Text line;
  for (const OwnedVariant& value : call.arguments) {
    if (&value != call.arguments.data()) line += u' ';
    line += TextOf(value);
  }
  Write(stdout, line + u'\n');
}

// The values of one name: as text they are joined by commas, and by number each by itself.
ComPtr<HostObject> MakeEntry(std::vector<Text> values) {
  ComPtr<HostObject> entry = HostObject::Make();
  entry->Add(L"Count", [count = values.size()](const HostObject::Call& call) {
    call.result.vt = VT_I4;
    call.result.lVal = static_cast<LONG>(count);
  });
  entry->Add(L"", [values = std::move(values)](const HostObject::Call& call) {
    if (!call.arguments.empty()) {
      const size_t position = std::stoul(ToUtf8(TextOf(call[0])));
      if (position < 1 || position > values.size()) throw HostFailure{E_INVALIDARG, u"Bad index"};
      return SetText(call.result, values[position - 1]);
    }
    Text joined;
    for (const Text& value : values) {
      if (&value != values.data()) joined += u", ";
      joined += value;
    }
    if (!values.empty()) SetText(call.result, joined);
  });
  return entry;
}

ComPtr<HostObject> MakeRequest(const Arguments& arguments) {
  ComPtr<HostObject> request = HostObject::Make();
  const auto entry = [arguments](const HostObject::Call& call) {
    const auto found = arguments.find(ToAsciiLower(TextOf(call[0])));
    const ComPtr<HostObject> made =
        MakeEntry(found == arguments.end() ? std::vector<Text>() : found->second);
    SetObject(call.result, made.get());
  };
  for (const wchar_t* name : {L"", L"Form", L"QueryString", L"ServerVariables"}) {
    request->Add(name, entry);
  }
  return request;
}

ComPtr<HostObject> MakeApplication() {
  ComPtr<HostObject> application = HostObject::Make();
  const auto store = std::make_shared<std::map<Text, OwnedVariant>>();
  const auto item = [store](const HostObject::Call& call) {
    const Text key = ToAsciiLower(TextOf(call[0]));
    if (call.writes) {
      VariantCopy(&(*store)[key], const_cast<OwnedVariant*>(&call[1]));
    } else if (const auto found = store->find(key); found != store->end()) {
      VariantCopy(&call.result, &found->second);
    }
  };
  for (const wchar_t* name : {L"", L"Item"}) application->Add(name, item);
  for (const wchar_t* name : {L"Lock", L"Unlock"}) application->Add(name, [](const auto&) {});
  return application;
}

}  // namespace

void Write(std::FILE* file, TextView text) {
  const std::string bytes = ToUtf8(text);
  std::fwrite(bytes.data(), 1, bytes.size(), file);
}

ComPtr<HostObject> MakeGlobals(const Arguments& arguments) {
  const auto argument = [arguments](const HostObject::Call& call) {
    const auto found = arguments.find(ToAsciiLower(TextOf(call[0])));
    if (found != arguments.end()) SetText(call.result, found->second.back());
  };
  ComPtr<HostObject> globals = HostObject::Make();
  ComPtr<HostObject> host = HostObject::Make();
  for (const auto& object : {globals, host}) {
    for (const wchar_t* name : {L"Echo", L"Print"}) object->Add(name, &Echo);
    object->Add(L"CreateObject", &Create);
    object->Add(L"Argument", argument);
  }
  globals->AddObject(L"Host", host);
  return globals;
}

void AddPage(HostObject& globals, const Arguments& arguments, const std::vector<Text>& blocks) {
  ComPtr<HostObject> response = HostObject::Make();
  response->Add(L"Write", [](const HostObject::Call& call) { Write(stdout, TextOf(call[0])); });
  response->Add(L"WriteBlock", [blocks](const HostObject::Call& call) {
    Write(stdout, blocks.at(std::stoul(ToUtf8(TextOf(call[0])))));
  });
  ComPtr<HostObject> server = HostObject::Make();
  server->Add(L"CreateObject", &Create);
  server->Add(L"MapPath", &MapPath);
  server->Add(L"HTMLEncode", [](const HostObject::Call& call) {
    Text encoded;
    AppendHtmlEncoded(encoded, TextOf(call[0]));
    SetText(call.result, encoded);
  });
  globals.AddObject(L"Request", MakeRequest(arguments));
  globals.AddObject(L"Response", response);
  globals.AddObject(L"Server", server);
  globals.AddObject(L"Application", MakeApplication());
}

}  // namespace vellum250::host
