// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A program with its own management command line; docs/embedding.md explains it.
#include <kestrel/kestrel.h>

#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <string>

namespace {

namespace AutoCli = Kestrel::AutoCli;
namespace CallSpec = Kestrel::CallSpec;
namespace MetaObj = Kestrel::MetaObj;

const std::map<std::string, long> kStore = {{"bolt", 1200}, {"nut", 800}, {"washer", 15}};

std::shared_ptr<MetaObj::MetaStruct> NewItem(const std::string& name, long count) {
  auto item = MetaObj::MetaStruct::New("Item");
  item->SetField("Name", name);
  item->SetField("Count", count);
  return item;
}

std::shared_ptr<MetaObj::MetaList> NewItemList() {
  return MetaObj::MetaList::New(MetaObj::MetaType::Struct, NewItem("", 0));
}

class ListCommand : public AutoCli::Command {
 public:
  ListCommand() {
    SetDescription("List the items in the store.");
    SetDefaultOutputFormatter("table");
    SetDefaultOutputParameter("fields:Item", "Name,Count");
  }

  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override {
    auto minimum = CallSpec::ParameterSpec::New("minimum-count", CallSpec::ParameterType::Int);
    minimum->SetDescription("Show only items with at least this count.");
    minimum->SetRequired(false);
    auto spec = CallSpec::InputSpec::New();
    spec->AddParameter(minimum);
    return spec;
  }

  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override {
    auto spec = CallSpec::OutputSpec::New();
    spec->SetRootObject(NewItemList());
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override {
    const long minimum =
        input->HasParameter("minimum-count") ? input->GetParameterInt("minimum-count") : 0;
    auto items = NewItemList();
    for (const auto& [name, count] : kStore) {
      if (count >= minimum) {
        items->Add(NewItem(name, count));
      }
    }
    output->SetRootObject(items);
  }
};

}  // namespace

int main(int argc, char** argv) {
  AutoCli::CliDispatcher dispatcher;
  dispatcher.GetRootNamespace()->SubNamespace("store")->RegisterNamespaceNode(
      std::make_shared<ListCommand>(), "list");
  try {
    dispatcher.HandleArgvInput(argc, argv);
  } catch (const std::exception& problem) {
    std::cerr << problem.what() << "\n";
    return 1;
  }
}
