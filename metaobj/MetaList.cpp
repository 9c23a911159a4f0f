// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaList.h"

#include <algorithm>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/ErrorList.h"
#include "metaobj/NestedRelease.h"
#include "metaobj/ShapeComparison.h"
#include "metaobj/SlabAllocator.h"
#include "metaobj/ValueText.h"

namespace Kestrel::MetaObj {

namespace {

constexpr std::size_t kReservedPerElement = 15;

std::string RefusalMessage(const std::vector<std::string>& errors) {
  std::string text = "Invalid structure detected by MetaList::Add.  Type Errors were: (" +
                     std::to_string(errors.size()) + ") : ";
  for (const std::string& error : errors) {
    text += error;
    text += ", ";
  }
  return text;
}

}  // namespace

MetaList::MetaList(MetaType elementKind, FactoryFlag flag)
    : MetaObject(MetaType::List, flag), elementKind_(elementKind) {}

MetaList::MetaList(MetaType elementKind, std::shared_ptr<MetaStruct>&& structure, FactoryFlag flag)
    : MetaObject(MetaType::List, flag),
      elementKind_(elementKind),
      structure_(std::move(structure)) {}

MetaList::~MetaList() {
  ReleaseNested(std::move(items_));
  if (structure_ != nullptr) {
    ReleaseContainer(std::move(structure_));
  }
}

std::shared_ptr<MetaList> MetaList::New(MetaType elementKind) {
  if (elementKind != MetaType::Int && elementKind != MetaType::Bool &&
      elementKind != MetaType::String) {
    throw KestrelException("Integer, boolean or string type expected for list.");
  }
  return MakeInSlab<MetaList>(elementKind, FactoryFlag());
}

std::shared_ptr<MetaList> MetaList::New(MetaType elementKind,
                                        const std::shared_ptr<MetaStruct>& structure) {
  return New(elementKind, std::shared_ptr<MetaStruct>(structure));
}

std::shared_ptr<MetaList> MetaList::New(MetaType elementKind,
                                        std::shared_ptr<MetaStruct>&& structure) {
  if (elementKind != MetaType::Struct) {
    throw KestrelException("Struct type expected for list.");
  }
  if (structure != nullptr) {
    structure->LockStructure();
  }
  return MakeInSlab<MetaList>(elementKind, std::move(structure), FactoryFlag());
}

std::shared_ptr<MetaList> MetaList::New(MetaType elementKind,
                                        const std::shared_ptr<MetaObject>& structure) {
  return New(elementKind, std::dynamic_pointer_cast<MetaStruct>(structure));
}

std::shared_ptr<MetaList> MetaList::New(MetaType elementKind, std::nullptr_t) {
  return New(elementKind, std::shared_ptr<MetaStruct>());
}

void MetaList::Add(const std::shared_ptr<MetaObject>& item) {
  Append(std::shared_ptr<MetaObject>(item));
}

void MetaList::Add(const std::shared_ptr<MetaBool>& item) { Append(item); }

void MetaList::Add(const std::shared_ptr<MetaInt>& item) { Append(item); }

void MetaList::Add(const std::shared_ptr<MetaString>& item) { Append(item); }

void MetaList::Add(const std::shared_ptr<MetaStruct>& item) { Append(item); }

void MetaList::Add(bool value) { Append(MetaBool::New(value)); }

void MetaList::Add(long value) { Append(MetaInt::New(value)); }

void MetaList::Add(int value) { Append(MetaInt::New(value)); }

void MetaList::Add(const char* value) { Append(MetaString::New(value)); }

void MetaList::Add(std::string&& value) { Append(MetaString::New(std::move(value))); }

void MetaList::Add(const std::string& value) { Append(MetaString::New(value)); }

void MetaList::Add(std::nullptr_t) { Append(nullptr); }

void MetaList::Append(std::shared_ptr<MetaObject>&& item) {
  if (item == nullptr) {
    throw KestrelException("Null object passed to Add");
  }
  if (item->GetType() != elementKind_) {
    throw KestrelException("Invalid type specificed in MetaList.  Expected object of type " +
                           MetaTypeString(elementKind_) + " got object of type " +
                           MetaTypeString(item->GetType()));
  }
  const bool isKnownToFit = elementKind_ != MetaType::Struct ||
                            (structure_ != nullptr && IsSurelySameShape(*structure_, *item));
  std::vector<std::string> errors;
  if (!isKnownToFit && !Validate(item, &errors)) {
    throw KestrelException(RefusalMessage(errors));
  }
  items_.push_back(std::move(item));
}

void MetaList::AddAll(const std::vector<bool>& values) {
  EnsureCapacity(values.size());
  for (const bool value : values) {
    Add(value);
  }
}

void MetaList::AddAll(const std::vector<long>& values) {
  EnsureCapacity(values.size());
  for (const long value : values) {
    Add(value);
  }
}

void MetaList::AddAll(const std::vector<std::string>& values) {
  EnsureCapacity(values.size());
  for (const std::string& value : values) {
    Add(value);
  }
}

void MetaList::AddAll(std::vector<std::string>&& values) {
  EnsureCapacity(values.size());
  for (std::string& value : values) {
    Add(std::move(value));
  }
}

std::shared_ptr<MetaStruct> MetaList::GetListStructure() const { return structure_; }

std::shared_ptr<MetaObject> MetaList::GetItem(unsigned int index) const {
  if (index >= items_.size()) {
    throw KestrelException("Get requested on invalid index of MetaList");
  }
  return items_[index];
}

void MetaList::Delete(unsigned int index) {
  if (index >= items_.size()) {
    throw KestrelException("Delete requested on invalid index of MetaList");
  }
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
}

void MetaList::Reserve(std::size_t n) { items_.reserve(n); }

void MetaList::EnsureCapacity(std::size_t n) {
  if (n <= items_.capacity() - items_.size()) {
    return;
  }
  if (n > items_.max_size() - items_.size()) {
    return items_.reserve(n);  // throws: no vector is that long
  }
  // At least doubled, so that the total time of many small requests is linear.
  items_.reserve(std::max(items_.size() + n, 2 * items_.capacity()));
}

bool MetaList::Validate(const std::shared_ptr<MetaObject>& item,
                        std::vector<std::string>* errors) const {
  if (item == nullptr) {
    AppendError(errors, "Invalid NULL input");
    return false;
  }
  if (item->GetType() != elementKind_) {
    AppendError(errors,
                "There was an error adding an item to this list.  The item being added was not the "
                "correct type for this list, so it was not added.");
    return false;
  }
  if (elementKind_ != MetaType::Struct) {
    return true;
  }
  if (structure_ == nullptr) {
    AppendError(errors, "List created with NULL structure.  No items can be added to this list.");
    return false;
  }
  if (!structure_->IsSameStructure(item, errors)) {
    AppendError(
        errors,
        "There was an error adding an item to this list.  The item being added did not match the "
        "declared structure of this list, so it was not added.");
    return false;
  }
  return true;
}

bool MetaList::IsSameStructure(const std::shared_ptr<MetaObject>& other,
                               std::vector<std::string>* errors) const {
  return IsSameShape(*this, other, errors);
}

std::string MetaList::ToString() const {
  std::string text;
  text.reserve(kReservedPerElement * items_.size());
  AppendText(*this, text);
  return text;
}

}  // namespace Kestrel::MetaObj
