#include <gtest/gtest.h>

#include "tests/support/testPlace.h"

int main(int count, char** arguments) {
  const test::tTestPlace place(arguments);
  testing::InitGoogleTest(&count, arguments);
  return RUN_ALL_TESTS();
}
