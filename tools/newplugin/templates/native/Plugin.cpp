// The plug-in @NAME@: a command that lists items. Replace the items with your data, and the
// parameters with those that your data needs.

#include <kestrel/autocli/PluginEntryPoint.h>
#include <kestrel/kestrel.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace AutoCli = Kestrel::AutoCli;
namespace CallSpec = Kestrel::CallSpec;
namespace MetaObj = Kestrel::MetaObj;

struct Item {
  std::string name;
  std::int64_t count;
  bool isReady;
};

std::vector<Item> ReadItems() {
  return {{"apple", 3, true}, {"cherry", 40, false}, {"fig", 12, true}, {"plum", 7, false}};
}

std::shared_ptr<MetaObj::MetaStruct> NewRow(const Item& item) {
  auto row = MetaObj::MetaStruct::New("Item");
  row->SetField("Name", MetaObj::MetaString::New(item.name), "The name of the item.");
  row->SetField("Count", MetaObj::MetaInt::New(item.count), "How many there are.");
  row->SetField("Ready", MetaObj::MetaBool::New(item.isReady), "Whether it can be used.");
  return row;
}

// An empty list. A sample structure declares the fields of its elements; its values do not matter.
std::shared_ptr<MetaObj::MetaList> NewList() {
  return MetaObj::MetaList::New(MetaObj::MetaType::Struct, NewRow({}));
}

// Makes a parameter. All parameters of the command are optional.
std::shared_ptr<CallSpec::ParameterSpec> NewParameter(const char* name, const char* shortName,
                                                      CallSpec::ParameterType type,
                                                      const char* description) {
  auto parameter = CallSpec::ParameterSpec::New(name, type);
  parameter->SetShortName(shortName);
  parameter->SetDescription(description);
  parameter->SetRequired(false);
  return parameter;
}

std::shared_ptr<CallSpec::ParameterSpec> NewSortParameter() {
  auto fields = CallSpec::ParameterConstraint::New(CallSpec::StringEnum);
  fields->AddStringEnum("name");
  fields->AddStringEnum("count");
  auto parameter = NewParameter("sort", "s", CallSpec::String,
                                "The field to sort by, one of %ENUM%; the default is name.");
  parameter->SetConstraint(fields);
  return parameter;
}

std::shared_ptr<CallSpec::ParameterSpec> NewLeastParameter() {
  auto range = CallSpec::ParameterConstraint::New(CallSpec::IntRange);
  range->SetIntRange(0, 1000);
  auto parameter =
      NewParameter("least", "l", CallSpec::Int, "List the items with at least this count, %ENUM%.");
  parameter->SetConstraint(range);
  return parameter;
}

std::shared_ptr<CallSpec::ParameterSpec> NewNameParameter() {
  auto letters = CallSpec::ParameterConstraint::New(CallSpec::StringRegex);
  letters->SetStringRegex("[a-z]+");
  auto parameter = NewParameter("name", "n", CallSpec::StringList,
                                "List the items of this name, %REGEX%; may be repeated.");
  parameter->SetConstraint(letters);
  return parameter;
}

template <typename Value>
bool IsOneOf(const std::vector<Value>& values, const Value& value) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

/// The items that the parameters of a call select.
class Selection {
 public:
  // The input has been checked against the declared parameters.
  explicit Selection(const CallSpec::Input& input)
      : least_(input.HasParameter("least") ? input.GetParameterInt("least") : 0) {
    input.GetParameterList("name", names_);
    input.GetParameterIntList("count", counts_);
    input.GetParameterBoolList("ready", ready_);
  }

  bool Contains(const Item& item) const {
    return item.count >= least_ && (names_.empty() || IsOneOf(names_, item.name)) &&
           (counts_.empty() || IsOneOf(counts_, item.count)) &&
           (ready_.empty() || IsOneOf(ready_, item.isReady));
  }

 private:
  std::int64_t least_;
  std::vector<std::string> names_;
  std::vector<std::int64_t> counts_;
  std::vector<bool> ready_;
};

void SortItems(std::vector<Item>& items, const std::string& field) {
  std::sort(items.begin(), items.end(), [&field](const Item& left, const Item& right) {
    return field == "count" ? left.count < right.count : left.name < right.name;
  });
}

void CapitalizeNames(std::vector<Item>& items) {
  for (Item& item : items) {
    std::transform(item.name.begin(), item.name.end(), item.name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  }
}

std::vector<Item> SelectItems(const CallSpec::Input& input) {
  const Selection selection(input);
  std::vector<Item> items;
  for (Item& item : ReadItems()) {
    if (selection.Contains(item)) {
      items.push_back(std::move(item));
    }
  }
  SortItems(items, input.GetParameter("sort"));
  if (input.IsFlagSet("reverse")) {
    std::reverse(items.begin(), items.end());
  }
  if (input.GetParameterBool("capitals")) {
    CapitalizeNames(items);
  }
  return items;
}

class ListCommand : public AutoCli::Command {
 public:
  ListCommand() {
    SetDescription("List the items.");
    SetDefaultOutputFormatter("table");
    SetDefaultOutputParameter("fields:Item", "Name,Count,Ready");
    AddMetaData("changes", "false");
    AddExample("--sort=count --reverse", "List the items with the greatest count first");
    AddExample("--ready=yes --least=10", "List the items that are ready, from ten on");
  }

  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override {
    auto spec = CallSpec::InputSpec::New();
    spec->AddParameter(NewSortParameter());
    spec->AddParameter(NewLeastParameter());
    spec->AddParameter(NewNameParameter());
    spec->AddParameter(
        NewParameter("capitals", "c", CallSpec::Bool, "Whether to write the names in capitals."));
    spec->AddParameter(NewParameter("reverse", "r", CallSpec::Flag, "Begin with the last item."));
    spec->AddParameter(NewParameter("count", "t", CallSpec::IntList,
                                    "List the items with this count; may be repeated."));
    spec->AddParameter(
        NewParameter("ready", "y", CallSpec::BoolList,
                     "List the items that are ready, or those that are not; may be repeated."));
    return spec;
  }

  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override {
    auto spec = CallSpec::OutputSpec::New();
    spec->SetRootObject(NewList());
    spec->SetDescription("The items.");
    return spec;
  }

  // A KestrelException becomes a message of the call, and so does what AddErrorMessage adds.
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) override {
    const auto list = NewList();
    for (const Item& item : SelectItems(*input)) {
      list->Add(NewRow(item));
    }
    output->SetRootObject(list);
  }
};

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<AutoCli::Namespace> root) {
  auto own = root->SubNamespace("@NAME@");
  own->SetDescription("The commands of the plug-in @NAME@.");
  own->RegisterNamespaceNode(std::make_shared<ListCommand>(), "list");
}
