#include "kalmia/analysis/report/internal/SmallerReport.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <utility>

namespace kalmia::analysis {

namespace {

constexpr int kDigits = 5;
constexpr std::size_t kLongestName = 200;  ///< bytes
constexpr auto kRows = "rows";

void RoundList(std::vector<double>* numbers) {
  double low = INFINITY, high = -INFINITY;
  for (const double number : *numbers) {
    if (!std::isfinite(number)) continue;
    low = std::min(low, number);
    high = std::max(high, number);
  }
  const double range = high > low ? high - low : std::fabs(low);
  if (!(range > 0.0) || !std::isfinite(range)) return;
  const double unit = std::pow(10.0, std::floor(std::log10(range)) + 1 - kDigits);
  const bool isLarge = unit >= 1.0;  // a factor that is whole brings the shortest decimals
  const double factor = isLarge ? unit : std::round(1 / unit);
  if (!std::isfinite(factor)) return;
  for (double& number : *numbers) {
    if (!std::isfinite(number)) continue;
    const double rounded = isLarge ? std::round(number / factor) * factor : std::round(number * factor) / factor;
    if (std::isfinite(rounded)) number = rounded;
  }
}

/// The beginning of a name, with no code point of UTF-8 cut in two.
void CutName(std::string* name) {
  if (name->size() <= kLongestName) return;
  std::size_t end = kLongestName;
  while (end > 0 && (static_cast<unsigned char>((*name)[end]) & 0xC0U) == 0x80U) --end;
  *name = name->substr(0, end) + "...";
}

template <class Do>
void ForEachMark(ReportPage* report, const Do& doIt) {
  for (Figure& figure : report->figures) {
    for (FigurePanel& panel : figure.panels) {
      for (FigureMark& mark : panel.marks) doIt(&mark);
    }
  }
}

/// Copies of shared lists with cut names, one for each list.
class CutLists {
 public:
  void Cut(SharedNames* names) {
    if (!*names) return;
    SharedNames& cut = lists_[names->get()];
    if (!cut) {
      auto list = std::make_shared<NameList>(**names);
      for (std::string& name : list->names) CutName(&name);
      cut = list;
      kept_.push_back(*names);
    }
    *names = cut;
  }

 private:
  std::map<const NameList*, SharedNames> lists_;
  std::vector<SharedNames> kept_;  ///< so that no other list gets the address of one that was cut
};

template <class T>
void KeepItems(const std::vector<std::size_t>& items, std::vector<T>* list) {
  if (list->size() <= 1 || items.empty()) return;  // one class stands for all items
  std::vector<T> kept;
  for (const std::size_t item : items) kept.push_back((*list)[item]);
  *list = std::move(kept);
}

/// Keeps these items, in rising order, of all lists of a mark. `index` afterwards tells the names.
void KeepItems(const std::vector<std::size_t>& items, FigureMark* mark) {
  const std::size_t count = mark->x.size();
  if (mark->names && mark->index.empty()) {
    for (std::size_t i = 0; i < count; ++i) mark->index.push_back(static_cast<int>(i));
  }
  std::vector<int> placeOf(count, -1), selected;
  for (std::size_t i = 0; i < items.size(); ++i) placeOf[items[i]] = static_cast<int>(i);
  for (const int item : mark->selected) {
    const int place = placeOf[static_cast<std::size_t>(item)];
    if (place >= 0) selected.push_back(place);
  }
  mark->selected = selected;
  for (std::vector<double>* list : {&mark->x, &mark->y, &mark->low, &mark->high, &mark->base, &mark->value}) {
    KeepItems(items, list);
  }
  KeepItems(items, &mark->index);
  KeepItems(items, &mark->classes);
}

bool IsOfRows(const FigureMark& mark) { return mark.names && mark.names->key == kRows; }

/// The lowest and the highest of each stretch, the first and the last.
std::vector<std::size_t> ItemsThatShow(const std::vector<double>& y, std::size_t most) {
  const std::size_t stretch = (2 * y.size() + most - 1) / most;
  std::vector<std::size_t> items = {0, y.size() - 1};
  for (std::size_t begin = 0; begin < y.size(); begin += stretch) {
    std::size_t low = begin, high = begin;
    for (std::size_t i = begin; i < std::min(begin + stretch, y.size()); ++i) {
      if (y[i] < y[low]) low = i;
      if (y[i] > y[high]) high = i;
    }
    items.push_back(low);
    items.push_back(high);
  }
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  return items;
}

/// Which rows remain of `count`.
std::vector<bool> RowsThatRemain(const ReportPage& report, std::size_t count, std::size_t most) {
  std::vector<bool> remains(count, false);
  const auto keep = [&remains](const FigureMark& mark, std::size_t item) {
    const std::size_t row = mark.index.empty() ? item : static_cast<std::size_t>(mark.index[item]);
    if (row < remains.size()) remains[row] = true;
  };
  for (std::size_t i = 0; i < most / 2; ++i) remains[i * count / (most / 2)] = true;
  for (const Figure& figure : report.figures) {
    for (const FigurePanel& panel : figure.panels) {
      for (const FigureMark& mark : panel.marks) {
        if (!IsOfRows(mark) || mark.x.empty()) continue;
        for (std::size_t i = 0; i < std::min(mark.selected.size(), most / 8); ++i) {
          keep(mark, static_cast<std::size_t>(mark.selected[i]));
        }
        for (const std::vector<double>* list : {&mark.x, &mark.y}) {
          for (const std::size_t item : ItemsThatShow(*list, std::max<std::size_t>(2, most / 16))) keep(mark, item);
        }
      }
    }
  }
  return remains;
}

/// Takes rows out of the figures, the components and the table.
void KeepRows(const std::vector<bool>& remains, ReportPage* report) {
  std::vector<int> placeOf(remains.size(), -1);
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < remains.size(); ++row) {
    if (!remains[row]) continue;
    placeOf[row] = static_cast<int>(rows.size());
    rows.push_back(row);
  }
  auto names = std::make_shared<NameList>(NameList{kRows, report->rowNames});
  KeepItems(rows, &names->names);
  ForEachMark(report, [&](FigureMark* mark) {
    if (!IsOfRows(*mark)) return;
    std::vector<std::size_t> items;
    for (std::size_t i = 0; i < mark->x.size(); ++i) {
      if (remains[mark->index.empty() ? i : static_cast<std::size_t>(mark->index[i])]) items.push_back(i);
    }
    KeepItems(items, mark);
    for (int& row : mark->index) row = placeOf[static_cast<std::size_t>(row)];
    mark->names = names;
  });
  for (FigureComponents& components : report->components) {
    for (FigureComponent& component : components.list) {
      if (component.values.size() == remains.size()) KeepItems(rows, &component.values);
    }
  }
  for (ReportColumn& column : report->columns) {
    KeepItems(rows, &column.texts);
    KeepItems(rows, &column.numbers);
  }
  report->rowNames = names->names;
}

}  // namespace

void Round(ReportPage* report) {
  CutLists lists;
  ForEachMark(report, [&lists](FigureMark* mark) {
    for (std::vector<double>* list : {&mark->x, &mark->y, &mark->low, &mark->high, &mark->base, &mark->value}) {
      RoundList(list);
    }
    lists.Cut(&mark->names);
  });
  for (Figure& figure : report->figures) {
    for (std::string& name : figure.classNames) CutName(&name);
    for (FigurePanel& panel : figure.panels) {
      lists.Cut(&panel.x.categories);
      lists.Cut(&panel.y.categories);
    }
  }
  for (FigureComponents& components : report->components) {
    for (FigureComponent& component : components.list) RoundList(&component.values);
  }
  for (std::string& name : report->rowNames) CutName(&name);
  for (ReportColumn& column : report->columns) {
    RoundList(&column.numbers);
    for (std::string& text : column.texts) CutName(&text);
  }
}

bool Thin(std::size_t most, ReportPage* report) {
  bool anyWent = false;
  if (report->rowNames.size() > most) {
    KeepRows(RowsThatRemain(*report, report->rowNames.size(), most), report);
    anyWent = true;
  }
  ForEachMark(report, [&](FigureMark* mark) {
    if (IsOfRows(*mark) || mark->x.size() <= most || mark->y.size() != mark->x.size()) return;
    KeepItems(ItemsThatShow(mark->y, most), mark);
    anyWent = true;
  });
  const auto isLong = [most](const FigureComponents& components) {
    return !components.list.empty() && components.list.front().values.size() > most;
  };
  // Other components have all items: they would not fit what remains of the ones shown.
  report->components.erase(std::remove_if(report->components.begin(), report->components.end(), isLong),
                           report->components.end());
  return anyWent;
}

}  // namespace kalmia::analysis
