// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/Random.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test
using Kestrel::KestrelException;
using Kestrel::Testing::Random;
using Kestrel::Testing::Rounds;

using Value = std::shared_ptr<MetaObject>;

// The model of a structure: an ordered map, a lock and a definition.
struct PlainRecord {
  struct Field {
    Value value;
    std::string documentation;
  };

  // Returns the error message, empty when the field was set.
  std::string Set(const std::string& name, const Value& value, const std::string& documentation) {
    const std::string failed = "Unable to set new field " + name + " on structure.";
    if (value == nullptr) {
      return "Invalid NULL value was assigned to the field " + name + " in the structure " +
             typeName;
    }
    if (isLocked && fields.count(name) == 0) {
      return failed + " Structure has been locked";
    }
    if (!isLocked && definition != nullptr && definition->fields.count(name) == 0) {
      return failed + "  The field does not match the Structure definition for this MetaStruct.";
    }
    fields[name] = {value, documentation};
    return "";
  }

  std::string Remove(const std::string& name) {
    if (isLocked) {
      return "Structure is locked, unable to remove fields";
    }
    fields.erase(name);
    return "";
  }

  bool MatchesDefinition() const {
    if (definition == nullptr) {
      return true;
    }
    for (const auto& [name, field] : fields) {
      const auto declared = definition->fields.find(name);
      if (declared == definition->fields.end() ||
          declared->second.value->GetType() != field.value->GetType()) {
        return false;
      }
    }
    return fields.size() == definition->fields.size();
  }

  std::string typeName;
  std::shared_ptr<PlainRecord> definition;
  std::map<std::string, Field> fields;
  bool isLocked = false;
};

struct Pair {
  std::shared_ptr<MetaStruct> structure;
  std::shared_ptr<PlainRecord> plain;
};

template <typename Call>
std::string MessageOf(const Call& call) {
  try {
    call();
  } catch (const KestrelException& error) {
    return error.what();
  }
  return "";
}

// Changes many structures at random, so that they share layouts, leave them and exceed their
// bounds, and makes the same changes to a model of each.
class Walk {
 public:
  explicit Walk(Random& random) : random_(random) {}

  void Step() {
    if (pairs_.size() < 3 || Pick(200) == 0) {
      pairs_.push_back(MakePair());
    }
    if (pairs_.size() > 40) {
      pairs_.erase(pairs_.begin() + Pick(40));
    }
    Pair& pair = pairs_[Pick(pairs_.size())];
    const std::string name = Name();
    switch (Pick(12)) {
      case 0:
        return Remove(pair, name);
      case 1:
        return Pick(30) == 0 ? Lock(pair) : Look(pair);
      case 2:
        return Set(pair, name, nullptr);
      case 3:
        return LookUp(pair, name);
      case 4:
        return Pick(300) == 0 ? Grow(pair) : Look(pair);
      default:
        return Set(pair, name, AnyValue());
    }
  }

 private:
  unsigned Pick(std::size_t count) { return static_cast<unsigned>(random_.Below(count)); }

  // Returns one of a few names, so that names repeat. Sometimes returns a long name.
  std::string Name() {
    const unsigned pool = Pick(4) == 0 ? 100 : 12;
    return std::to_string(Pick(pool)) + std::string(Pick(300) == 0 ? 250 + Pick(10) : 0, 'x');
  }

  Value AnyValue() {
    switch (Pick(3)) {
      case 0:
        return MetaInt::New(Pick(40));
      case 1:
        return MetaBool::New(Pick(2) == 0);
      default:
        return MetaString::New(std::to_string(Pick(9)));
    }
  }

  Pair MakePair() {
    const auto plain = std::make_shared<PlainRecord>();
    if (!pairs_.empty() && Pick(3) == 0) {
      const Pair& definition = pairs_[Pick(pairs_.size())];
      definition.plain->isLocked = true;
      plain->definition = definition.plain;
      plain->typeName = definition.plain->typeName;
      return {MetaStruct::New(definition.structure), plain};
    }
    plain->typeName = "T" + std::to_string(Pick(20));
    return {MetaStruct::New(plain->typeName), plain};
  }

  void Set(const Pair& pair, const std::string& name, const Value& value) {
    const std::string documentation = Pick(3) == 0 ? "text " + std::to_string(Pick(3)) : "";
    EXPECT_EQ(MessageOf([&] { pair.structure->SetField(name, value, documentation); }),
              pair.plain->Set(name, value, documentation));
  }

  void Remove(const Pair& pair, const std::string& name) {
    EXPECT_EQ(MessageOf([&] { pair.structure->RemoveField(name); }), pair.plain->Remove(name));
  }

  void Lock(const Pair& pair) {
    pair.structure->LockStructure();
    pair.plain->isLocked = true;
  }

  // Adds many fields and removes them again.
  void Grow(const Pair& pair) {
    for (int field = 0; field < 100; ++field) {
      Set(pair, "g" + std::to_string(field), AnyValue());
    }
    Look(pair);
    for (int field = 0; field < 100; ++field) {
      Remove(pair, "g" + std::to_string(field));
    }
  }

  void LookUp(const Pair& pair, const std::string& name) {
    const auto found = pair.plain->fields.find(name);
    ASSERT_EQ(pair.structure->HasField(name), found != pair.plain->fields.end());
    if (found == pair.plain->fields.end()) {
      EXPECT_EQ(pair.structure->GetField(name), nullptr);
      EXPECT_EQ(pair.structure->FindField(name), nullptr);
      EXPECT_THROW(pair.structure->GetFieldType(name), int);
      EXPECT_EQ(MessageOf([&] { pair.structure->GetFieldDocumentation(name); }),
                "Field " + name + " is not present in the structure " + pair.plain->typeName);
      return;
    }
    const auto& [value, documentation] = found->second;
    EXPECT_EQ(pair.structure->GetField(name), value);
    EXPECT_EQ(pair.structure->FindField(name), value.get());
    EXPECT_EQ(pair.structure->GetFieldType(name), value->GetType());
    EXPECT_EQ(pair.structure->GetFieldDocumentation(name),
              documentation.empty() ? "Documentation missing" : documentation);
  }

  void Look(const Pair& pair) {
    std::vector<std::string> names;
    std::string text = "{";
    for (const auto& [name, field] : pair.plain->fields) {
      names.push_back(name);
      text += "'" + name + "' => '" + field.value->ToString() + "', ";
    }
    EXPECT_EQ(pair.structure->GetFieldNames(), names);
    EXPECT_EQ(pair.structure->ToString(), text + "}");
    EXPECT_EQ(pair.structure->GetTypeName(), pair.plain->typeName);
    EXPECT_EQ(pair.structure->MatchesStructureDefinition(), pair.plain->MatchesDefinition());
  }

  Random& random_;
  std::vector<Pair> pairs_;
};

TEST(MetaStructModelTest, ManyStructuresBehaveLikeTheirModels) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  Walk walk(random);
  for (int steps = Rounds(40000, 4000000); steps > 0 && !HasFailure(); --steps) {
    walk.Step();
  }
}

}  // namespace
