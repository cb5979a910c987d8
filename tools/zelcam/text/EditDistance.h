// Finding the word that was meant.
#ifndef ZELCAM_EDITDISTANCE_H
#define ZELCAM_EDITDISTANCE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zelcam {

// How many letters must be inserted, removed, replaced or swapped with their neighbour to turn one word into the other.
std::size_t EditDistance(std::string_view from, std::string_view to);

// The candidates nearest to `word`, at most `count`, nearest first; those more than a third of the word's letters away
// are left out unless they contain the word.
std::vector<std::string> NearestWords(std::string_view word, const std::vector<std::string>& candidates,
                                      std::size_t count);

}  // namespace zelcam

#endif
