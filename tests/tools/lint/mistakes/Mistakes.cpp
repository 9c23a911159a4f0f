// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Mistakes of authors of shared objects. For each function, there is a shared object whose entry
// point calls it. Other mistakes have no function here: UndefinedFunction is called but never
// defined, and some shared objects declare their entry point in a wrong way.

#include <kestrel/kestrel.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using Kestrel::AutoCli::Namespace;
using Kestrel::CallSpec::Input;
using Kestrel::CallSpec::InputSpec;
using Kestrel::CallSpec::Output;
using Kestrel::CallSpec::OutputSpec;
using Kestrel::CallSpec::ParameterConstraint;
using Kestrel::CallSpec::ParameterSpec;
using Kestrel::CallSpec::ParameterType;
using Kestrel::MetaObj::MetaInt;
using Kestrel::MetaObj::MetaList;
using Kestrel::MetaObj::MetaObject;
using Kestrel::MetaObj::MetaString;
using Kestrel::MetaObj::MetaStruct;
using Kestrel::MetaObj::MetaType;

using Root = std::shared_ptr<Namespace>;

std::shared_ptr<MetaObject> NewDisk() {
  auto disk = MetaStruct::New("Disk");
  disk->SetField("Name", MetaString::New(), "The name.");
  disk->SetField("Size", MetaInt::New(1), "The size.");
  return disk;
}

std::shared_ptr<MetaObject> NewDisks() {
  return MetaList::New(MetaType::Struct, std::static_pointer_cast<MetaStruct>(NewDisk()));
}

std::shared_ptr<ParameterSpec> NewParameter(const char* name, ParameterType type) {
  auto parameter = ParameterSpec::New(name, type);
  parameter->SetDescription("A parameter.");
  parameter->SetRequired(false);
  return parameter;
}

/// What a command declares, without a mistake.
struct Declaration {
  std::string formatter = "table";
  std::map<std::string, std::string> formatParameters = {{"fields:Disk", "Name,Size"}};
  std::string example = "--name=sda";
  std::shared_ptr<MetaObject> result = NewDisks();
  std::function<std::shared_ptr<InputSpec>()> input = [] {
    auto spec = InputSpec::New();
    spec->AddParameter(NewParameter("name", ParameterType::String));
    return spec;
  };
  std::function<void(const Input&)> work = [](const Input&) {};
};

class DeclaredCommand : public Kestrel::AutoCli::Command {
 public:
  explicit DeclaredCommand(const Declaration& declaration) : declaration_(declaration) {
    SetDescription("List the disks.");
    SetDefaultOutputFormatter(declaration.formatter);
    for (const auto& [name, value] : declaration.formatParameters) {
      SetDefaultOutputParameter(name, value);
    }
    AddMetaData("changes", "false");
    AddExample(declaration.example, "List one disk");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override { return declaration_.input(); }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    if (declaration_.result != nullptr) {
      spec->SetRootObject(declaration_.result);
    }
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) override {
    declaration_.work(*input);
    output->SetRootObject(declaration_.result);
  }

 private:
  const Declaration declaration_;
};

std::shared_ptr<Kestrel::AutoCli::NamespaceNode> NewNamespace(const Root& root) {
  auto disk = root->SubNamespace("disk");
  disk->SetDescription("Disks.");
  return disk;
}

void Register(const Root& root, const Declaration& declaration, const char* name = "list") {
  NewNamespace(root)->RegisterNamespaceNode(std::make_shared<DeclaredCommand>(declaration), name);
}

void RegisterWith(const Root& root, const std::function<void(InputSpec& spec)>& addParameters) {
  Declaration declaration;
  declaration.example.clear();
  declaration.input = [addParameters] {
    auto spec = InputSpec::New();
    addParameters(*spec);
    return spec;
  };
  Register(root, declaration);
}

}  // namespace

void NoMistake(const Root& root) { Register(root, {}); }

void CrashAtStart(const Root& /*root*/) { std::raise(SIGSEGV); }

void LoopAtStart(const Root& /*root*/) {
  while (true) {
    pause();
  }
}

void ForeignException(const Root& /*root*/) { throw std::out_of_range("there is no disk"); }

void BadPath(const Root& root) { Register(root, {}, "listDISKS"); }

void PathTwice(const Root& root) {
  Register(root, {});
  Register(root, {});
}

void ParameterTwice(const Root& root) {
  RegisterWith(root, [](InputSpec& spec) {
    spec.AddParameter(NewParameter("name", ParameterType::String));
    spec.AddParameter(NewParameter("name", ParameterType::Int));
  });
}

void BadParameterName(const Root& root) {
  RegisterWith(root, [](InputSpec& spec) {
    spec.AddParameter(NewParameter("diskName", ParameterType::String));
  });
}

void SecretInteger(const Root& root) {
  RegisterWith(root, [](InputSpec& spec) {
    auto pin = NewParameter("pin", ParameterType::Int);
    pin->SetSecret(true);
    spec.AddParameter(pin);
  });
}

void ConstraintOfAnotherType(const Root& root) {
  RegisterWith(root, [](InputSpec& spec) {
    auto range = ParameterConstraint::New(Kestrel::CallSpec::IntRange);
    range->SetIntRange(1, 9);
    auto name = NewParameter("name", ParameterType::String);
    name->SetConstraint(range);
    spec.AddParameter(name);
  });
}

void SharedInputSpec(const Root& root) {
  Declaration declaration;
  const auto spec = declaration.input();
  declaration.input = [spec] { return spec; };
  Register(root, declaration, "list");
  Register(root, declaration, "show");
}

void NoShape(const Root& root) {
  Declaration declaration;
  declaration.result = nullptr;
  declaration.formatter = "simple";
  declaration.formatParameters.clear();
  Register(root, declaration);
}

void MisspeltFormatter(const Root& root) {
  Declaration declaration;
  declaration.formatter = "tabel";
  Register(root, declaration);
}

void MisspeltColumn(const Root& root) {
  Declaration declaration;
  declaration.formatParameters = {{"fields:Disk", "Name,Sise"}};
  Register(root, declaration);
}

void TableOfOneStructure(const Root& root) {
  Declaration declaration;
  declaration.result = NewDisk();
  Register(root, declaration);
}

void BrokenExpression(const Root& root) {
  RegisterWith(root, [](InputSpec& spec) {
    auto letters = ParameterConstraint::New(Kestrel::CallSpec::StringRegex);
    letters->SetStringRegex("[a-z+");
    auto name = NewParameter("name", ParameterType::String);
    name->SetConstraint(letters);
    spec.AddParameter(name);
  });
}

void RefusedExample(const Root& root) {
  Declaration declaration;
  declaration.example = "--disk=sda";
  Register(root, declaration);
}

void IntegerFromString(const Root& root) {
  Declaration declaration;
  declaration.work = [](const Input& input) { input.GetParameterInt("name"); };
  Register(root, declaration);
}
