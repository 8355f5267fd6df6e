#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What may help after a failure, or in what a note tells of. How it is done depends on who asks: by an option of a command, by an argument.
enum class Remedy {
  None,
  NameMissingWords,        ///< say which further words stand for missing cells
  LeaveOutLinesAbove,      ///< leave out lines above the header, or comments
  NameRows,                ///< name a column that matches the rows of two tables
  ChooseColumnsOrNameRows, ///< choose other columns, or name the rows
  FillHoles,               ///< let missing cells be estimated
  TakeSingleLinkage,       ///< take single linkage, which can use the disk
  GiveMemory,              ///< allow more memory
  GiveMemoryOrFolder,      ///< allow more memory, or name another folder of temporary files
  TakeSpreadOfValues,      ///< take the standard deviation from the values
  NameClasses,             ///< name the column as one of classes
  ChooseOtherwise,         ///< choose the number of components by another rule, or give it
  LeaveOutColumn,          ///< leave the column out of X
  NameGroups,              ///< name a column whose values tell which rows are left out together
};

/// Where in a table or in a recipe something is wrong, as far as that is known.
struct FailurePlace {
  std::optional<int> row = {};  ///< from 1
  std::string column = {};      ///< its name
  std::string word = {};        ///< the text of the cell, or a name that the table does not have
  std::string setting = {};     ///< the member of the recipe
};

/// The place of what is wrong with a recipe: the name of its member.
inline FailurePlace InSetting(std::string name) { return {{}, {}, {}, std::move(name)}; }

/// What ended the work, as one sentence for the person who asked for it. Whoever throws it has left nothing half done.
class KALMIA_EXPORT Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& sentence, Remedy remedy = Remedy::None, FailurePlace place = {})
      : std::runtime_error(sentence), remedy_(remedy), place_(std::move(place)) {}
  Failure(const std::string& sentence, FailurePlace place) : Failure(sentence, Remedy::None, std::move(place)) {}

  Remedy WhatHelps() const { return remedy_; }
  const FailurePlace& Place() const { return place_; }

 private:
  Remedy remedy_;
  FailurePlace place_;
};

/// The data, or what they lead to: a cell that is no number, a column without variance, a fit that cannot be computed.
class KALMIA_EXPORT BadData : public Failure {
 public:
  using Failure::Failure;
};

/// What was asked for makes no sense, whatever the data.
class KALMIA_EXPORT BadRequest : public Failure {
 public:
  using Failure::Failure;
};

/// A file that cannot be read or written, or that is not what it should be.
class KALMIA_EXPORT BadFile : public Failure {
 public:
  using Failure::Failure;
};

/// The user wanted to stop.
class KALMIA_EXPORT Stopped : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace kalmia::analysis
