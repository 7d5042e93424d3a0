#ifndef TESTS_AGREEMENT_MUTATIONS_H
#define TESTS_AGREEMENT_MUTATIONS_H

#include <random>
#include <string>
#include <vector>

namespace agreement {

// The two description files as lines, which mutations take apart.
struct tDescription {
  std::vector<std::string> files[2];  // pxisys.ini, pxiesys.ini
  std::string encodings[2];           // what goes ahead of the first line
  std::string lineEnd = "\n";

  std::string text(int file) const;
};

using tRandom = std::mt19937;

// A right installation of a few chassis.
tDescription makeRight(tRandom& random);

// Changes something, and tells the first line that is another one.
std::string mutate(tDescription& description, tRandom& random);

}  // namespace agreement

#endif
