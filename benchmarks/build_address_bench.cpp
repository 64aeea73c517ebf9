// BuildAddress with all the fields that need no list from the database, both dictionaries loaded.

#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>

#include "automation/dictionary.h"
#include "server/factory.h"
#include "texts.h"

namespace vellum250 {
namespace {

Text TextOf(const nlohmann::json& value) { return FromUtf8(value.get<std::string>()); }

struct Form {
  ObjectRef address = server::CreateObject(u"vellum250.address");
  Ref<Dictionary> texts = MakeObject<Dictionary>();
  Ref<Dictionary> settings = MakeObject<Dictionary>();
  int32_t textId = 0;
  std::vector<Variant> arguments;

  explicit Form(const nlohmann::json& form) {
    textId = form["textId"];
    for (const auto& [label, text] : form["texts"].items()) {
      texts->Add(u"General" + FromUtf8(label) + NumberText(textId), TextOf(text));
    }
    for (int i = 0; i < form["otherTexts"]; ++i) {
      texts->Add(u"OtherLabel" + NumberText(i) + NumberText(textId), u"another text");
    }
    for (const auto& [key, value] : form["settings"].items()) {
      settings->Add(FromUtf8(key), TextOf(value));
    }
    Enter();

    arguments.emplace_back(form["details"].get<int32_t>());
    arguments.emplace_back(form["mandatory"].get<int32_t>());
    for (const auto& field : form["fields"]) arguments.emplace_back(TextOf(field));
    arguments.emplace_back(u"");  // sfCountryRef
    arguments.emplace_back(0);    // sfDefaultAddrssType
    arguments.emplace_back(u"");  // sfAddressTypeList
    arguments.emplace_back(TextOf(form["main"]));
    arguments.emplace_back(true);
    arguments.emplace_back(TextOf(form["entityType"]));
    arguments.emplace_back(form["sysRef"].get<int32_t>());
    arguments.emplace_back(form["locRef"].get<int32_t>());
    arguments.emplace_back(TextOf(form["pafPrefix"]));
    arguments.emplace_back(TextOf(form["comments"]));
  }

  // The context is the thread's: another benchmark may have set it since.
  void Enter() {
    Set(u"TextID", textId);
    Set(u"appDictShowText", texts);
    Set(u"appDictWebConfig", settings);
  }

  void Set(TextView member, Variant value) {
    address->Invoke(member, InvokeKind::Method, Arguments(&value, 1));
  }
  Variant Render() { return address->Invoke(u"BuildAddress", InvokeKind::Method, arguments); }
};

void BuildAddress(benchmark::State& state, Form* form) {
  form->Enter();
  for (auto _ : state) benchmark::DoNotOptimize(form->Render());
}

}  // namespace

void RegisterBuildAddress(const std::string& folder) {
  std::ifstream file(folder + "/form.json");
  // Lives until the program ends, as the registered benchmark does.
  static Form form(nlohmann::json::parse(file));
  form.Render();  // the first call also includes the script file; the peers render later ones
  WriteText(folder + "/form.html", form.Render().As<Text>());
  benchmark::RegisterBenchmark("BuildAddress", BuildAddress, &form);
}

}  // namespace vellum250
