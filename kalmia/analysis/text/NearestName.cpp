#include "kalmia/analysis/text/NearestName.h"

#include <algorithm>
#include <cstddef>

#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

namespace {

/// Small letters alone, without what is often written in several ways. Letters beyond ASCII stay as they are.
std::string Plain(const std::string& name) {
  std::string plain;
  for (const char letter : name) {
    if (letter == ' ' || letter == '_' || letter == '-') continue;
    plain += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  }
  return plain;
}

/// "loo" of leave-one-out.
std::string Initials(const std::string& word) {
  std::string initials;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (i == 0 || word[i - 1] == '-') initials += word[i];
  }
  return initials;
}

/// How many letters have to be changed, put in, taken out or exchanged with their neighbour to make b of a; more than
/// `most` where it is more than that. Source: F. J. Damerau, Comm. ACM 7 (1964) 171-176, as a restricted edit distance.
std::size_t Distance(const std::string& a, const std::string& b, std::size_t most) {
  if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > most) return most + 1;
  std::vector<std::size_t> twoBefore(b.size() + 1), before(b.size() + 1), now(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) now[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    twoBefore.swap(before);
    before.swap(now);
    now[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      now[j] = std::min({before[j] + 1, now[j - 1] + 1, before[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      const bool isExchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isExchanged) now[j] = std::min(now[j], twoBefore[j - 2] + 1);
    }
  }
  return now.back();
}

std::size_t MostChanges(std::size_t letters) { return letters < 3 ? 0 : letters < 8 ? 1 : 2; }

}  // namespace

std::string NearestName(const std::string& name, const std::vector<std::string>& names) {
  constexpr std::size_t kLongest = 200;  // names beyond it are no slips of the pen
  const std::string wanted = Plain(name);
  if (wanted.empty() || wanted.size() > kLongest) return "";
  std::string nearest;
  std::size_t least = MostChanges(wanted.size()) + 1;
  for (const std::string& candidate : names) {
    const std::size_t distance = Distance(wanted, Plain(candidate), least);
    if (distance >= least) continue;
    least = distance;
    nearest = candidate;
    if (least == 0) break;
  }
  return nearest;
}

std::string NearestWord(const std::string& word, const std::vector<std::string>& words) {
  const std::string nearest = NearestName(word, words);
  const std::string wanted = Plain(word);
  if (!nearest.empty() || wanted.size() < 2) return nearest;
  std::string found;
  for (const std::string& candidate : words) {
    if (Initials(candidate) == wanted) return candidate;
    const std::string plain = Plain(candidate);
    const bool isLonger = plain.size() > 1 && wanted.rfind(plain, 0) == 0;
    if (plain.rfind(wanted, 0) != 0 && !isLonger) continue;
    if (!found.empty()) return "";
    found = candidate;
  }
  return found;
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& names) {
  const std::string nearest = NearestName(name, names);
  return nearest.empty() ? "" : ", did you mean " + Quoted(nearest) + "?";
}

}  // namespace kalmia::analysis
