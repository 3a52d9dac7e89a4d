#include "tools/category_table.h"

#include <utility>

#include "common/error.h"
#include "tools/escape.h"
#include "tools/name_codec.h"
#include "tools/program_error.h"

namespace urldb {

namespace {
constexpr std::size_t kMostNames = 32767;  // IDs have 15 bits
}  // namespace

void CategoryTable::startFrom(const CategoryNames& names) {
  names_ = names.view().names.size();
  for (std::size_t i = 0; i < names_; ++i) {
    const int id = static_cast<int>(i) + 1;
    ids_.try_emplace(names.getNames(id), id);
  }
}

void CategoryTable::startAnewFrom(const CategoryNames& names) {
  startFrom(names);
  const CategoryView view = names.view();
  newNames_.assign(view.names.begin(), view.names.end());
  for (const CategoryBranch& branch : view.branches()) {
    const int high = branch.level1 << 16;
    if (branch.level2.empty()) recorded(high);
    for (const int low : branch.level2) baseValue(high | low);
  }
}

int CategoryTable::idOf(const std::string& name) {
  const auto [place, added] = ids_.try_emplace(name, 0);
  if (!added) return place->second;
  if (names_ == kMostNames) {
    ids_.erase(place);
    throw ProgramError("category " + escapeText(toUtf8Name(name)) +
                       ": a database has room for 32767 category names, and "
                       "all are taken");
  }
  newNames_.push_back(name);
  place->second = static_cast<int>(++names_);
  return place->second;
}

int32_t CategoryTable::value(const Category& category) {
  const std::string* level1 = &category.level1;
  if (level1->empty()) {
    level1 = hierarchy_.level1Of(category.name);
    if (level1 == nullptr) level1 = &category.name;
  }
  const int high = idOf(*level1);
  return recorded(high << 16 | idOf(category.name));
}

int32_t CategoryTable::baseValue(int32_t value) {
  const int id = value & 0xFFFF;
  if (value >> 16 != id) return recorded(value);
  // By ID and not by name: a name may stand in the base twice.
  const std::string* const level1 =
      hierarchy_.level1Of(newNames_[static_cast<std::size_t>(id) - 1]);
  return recorded(level1 == nullptr ? value : idOf(*level1) << 16 | id);
}

int32_t CategoryTable::recorded(int32_t value) {
  if (known_.insert(value).second) values_.push_back(value);
  return value;
}

void CategoryTable::complete(CategoryNames* names) const {
  auto id = static_cast<int>(names_ - newNames_.size());
  for (const std::string& name : newNames_) {
    if (names->addCateogry(name.c_str()) != ++id)
      throw ErrException(ERR_INVALID_STATUS, 0,
                         "the names have changed meanwhile");
  }
  for (const int32_t value : values_) names->setHierarchical(value);
}

}  // namespace urldb
