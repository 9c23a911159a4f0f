// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/RowOrder.h"

#include <kestrel/metaobj/MetaBool.h>
#include <kestrel/metaobj/MetaInt.h>
#include <kestrel/metaobj/MetaObject.h>
#include <kestrel/metaobj/MetaString.h>
#include <kestrel/metaobj/MetaStruct.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {
namespace {

using MetaObj::MetaObject;

using Rows = std::vector<std::shared_ptr<MetaObject>>;

constexpr std::int64_t kMaxLimit = 1000000000;

/// Sorts the rows by a field whose values are of class `Class`. Looks up each value once.
template <typename Class, typename Key>
void SortBy(const std::string& field, bool isDescending, Rows& rows) {
  std::vector<std::pair<Key, std::shared_ptr<MetaObject>>> keyed;
  keyed.reserve(rows.size());
  for (std::shared_ptr<MetaObject>& row : rows) {
    const auto* value = static_cast<const MetaObj::MetaStruct&>(*row).FindField(field);
    keyed.emplace_back(static_cast<const Class&>(*value).GetValue(), std::move(row));
  }
  std::stable_sort(keyed.begin(), keyed.end(), [&](const auto& left, const auto& right) {
    return isDescending ? right.first < left.first : left.first < right.first;
  });
  std::transform(keyed.begin(), keyed.end(), rows.begin(),
                 [](auto& each) { return std::move(each.second); });
}

void SortRows(MetaObj::MetaType kind, const std::string& field, bool isDescending, Rows& rows) {
  switch (kind) {
    case MetaObj::MetaType::Bool:
      return SortBy<MetaObj::MetaBool, bool>(field, isDescending, rows);
    case MetaObj::MetaType::Int:
      return SortBy<MetaObj::MetaInt, long>(field, isDescending, rows);
    default:
      // The views are valid because the rows own the strings.
      return SortBy<MetaObj::MetaString, std::string_view>(field, isDescending, rows);
  }
}

std::string Join(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) {
    joined += (joined.empty() ? "" : ", ") + name;
  }
  return joined;
}

}  // namespace

void RowOrder::DeclareParameters(CallSpec::InputSpec& spec) {
  Parameter("sort", CallSpec::String, "Sort the list by the field with this name.").AddTo(spec);
  Parameter("descending", CallSpec::Flag, "Put the greatest value first; needs --sort.")
      .AddTo(spec);
  Parameter("limit", CallSpec::Int, "List only the first rows, at most this many; %ENUM%.")
      .Between(1, kMaxLimit)
      .AddTo(spec);
}

std::optional<RowOrder> RowOrder::Read(const CallSpec::Input& input, const StructShape& shape,
                                       CallSpec::Output& output) {
  RowOrder order;
  order.isDescending_ = input.IsFlagSet("descending");
  if (input.HasParameter("limit")) {
    order.limit_ = static_cast<std::size_t>(input.GetParameterInt("limit"));
  }
  if (!input.HasParameter("sort")) {
    if (order.isDescending_) {
      output.AddErrorMessage("--descending needs --sort with the name of a field.");
      return std::nullopt;
    }
    return order;
  }
  const std::string& field = input.GetParameter("sort");
  const std::vector<std::string> fields = shape.GetSortFields();
  if (std::find(fields.begin(), fields.end(), field) == fields.end()) {
    output.AddErrorMessage("There is no field '" + field +
                           "' to sort by. Sort by one of: " + Join(fields) + ".");
    return std::nullopt;
  }
  order.field_ = shape.GetSortKey(field);
  order.kind_ = shape.GetKind(order.field_);
  return order;
}

std::shared_ptr<MetaObj::MetaList> RowOrder::Apply(
    const std::shared_ptr<MetaObj::MetaList>& rows) const {
  const Rows& given = rows->GetObjects();
  if (field_.empty() && given.size() <= limit_) {
    return rows;
  }
  Rows wanted = given;
  if (!field_.empty()) {
    SortRows(kind_, field_, isDescending_, wanted);
  }
  wanted.resize(std::min(wanted.size(), limit_));
  const auto ordered = MetaObj::MetaList::New(MetaObj::MetaType::Struct, rows->GetListStructure());
  ordered->Reserve(wanted.size());
  for (const std::shared_ptr<MetaObject>& row : wanted) {
    ordered->Add(row);
  }
  return ordered;
}

}  // namespace Kestrel::Host
