#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kalmia::analysis {

// A figure as plain data: what is to be seen, not how. Looks are words, so that each reader (a drawing, a page, a
// program) has colours of its own for light, dark and paper. Numbers that are not finite are gaps.

/// Names that marks and axes share, also those of several figures.
struct NameList {
  std::string key;  ///< by which figures refer to it: rows, columns, y-columns, new-rows; empty: of one place alone
  std::vector<std::string> names;
};
using SharedNames = std::shared_ptr<const NameList>;

/// A place on an axis, with the text to stand there.
struct FigureTick {
  double at = 0.0;
  std::string label;
};

struct FigureAxis {
  enum class Kind {
    Number,
    Category  ///< category k, from 0, stands at k
  };

  std::string label;  ///< with the unit
  Kind kind = Kind::Number;
  std::optional<double> low, high;  ///< ends that are fixed; otherwise where the data end
  bool whole = false;               ///< of counts: only whole numbers have ticks
  std::vector<FigureTick> ticks;    ///< of numbers, in rising order; none: where the reader likes
  SharedNames categories;           ///< of categories, from 0
};

/// What a mark is. Colours, dashes and shapes are the reader's.
enum class FigureLook {
  Data,
  Second,  ///< data beside other data
  Faint,   ///< what is there for comparison
  Plain,   ///< lines that carry no data: zero, a diagonal, branches
  Centre,
  Limit,
  Signal,  ///< what is beyond a limit
  Ring,    ///< around a point that something is to be said of
  Class    ///< data of classes, see FigureMark::classes
};

/// Marks of one kind, an item for each x and y. Lists other than x and y are empty or as long as they are.
struct FigureMark {
  enum class Type {
    Points,
    Line,  ///< from item to item, broken at gaps
    Bars,  ///< upright, from `base` to y
    /// With `value`: squares of one unit around each item, shaded by it from 0 to 1. With `low` and `high`: the band
    /// between them. Otherwise: what the items, as corners, enclose.
    Area,
    Rule,  ///< across the panel: a y alone, level, or an x alone, upright
    Text   ///< the names themselves
  };

  Type type = Type::Points;
  FigureLook look = FigureLook::Data;
  std::string name;  ///< what the items are, for a legend, or beside a rule; empty: nothing is to be said
  std::vector<double> x, y;
  std::vector<double> low, high;  ///< intervals of y
  std::vector<double> base;       ///< where bars begin; empty: at 0
  std::vector<double> value;
  double width = 0.8;             ///< of bars, in units of x
  SharedNames names;              ///< of the items; null where they have none
  std::vector<int> index;         ///< which name each item has, from 0; empty: all have theirs, in order
  std::vector<int> classes;       ///< of each item, from 0, or -1 for none; one number: of all items
  std::vector<int> selected;      ///< places of items that the figure is about, from 0: beyond a limit, asked for
  bool labels = false;            ///< whether names are to stand beside the items, as far as there is room
};

/// Marks on common axes, drawn in order.
struct FigurePanel {
  FigureAxis x, y;
  std::vector<FigureMark> marks;
};

struct Figure {
  enum class Kind {
    Rows,     ///< items stand for rows of a table
    Columns,  ///< for columns
    Components,
    Other  ///< for bins, lags, classes, permutations
  };

  std::string name;  ///< one word, unique among the figures of a model: scores, loadings
  Kind kind = Kind::Rows;
  std::string title;
  std::vector<FigurePanel> panels;      ///< one at least, below each other
  std::vector<std::string> classNames;  ///< of the classes that marks refer to
  std::string alt;  ///< what it shows, in words and numbers, for who does not see it
  std::vector<std::string> notes;
};

}  // namespace kalmia::analysis
