// The loading of the service library, which the exported functions tell only the code of.

#include <gtest/gtest.h>

#include "source/varmex/library.h"
#include "tests/support/serviceLibrary.h"
#include "tests/support/status.h"

namespace varmex {

namespace {

TEST(ServiceLibrary, tellsWhatIsMissing) {
  const tServiceLibrary library;
  EXPECT_FALSE(library.isLoaded());
  try {
    library.requireLoaded();
    FAIL();
  } catch (const LibraryNotAvailableException& exception) {
    EXPECT_EQ(exception.record().code, -380766);
    EXPECT_STREQ(exception.corerr::ExceptionBase::what(), R"({"path":"dunmorsvc"})");
    EXPECT_STREQ(static_cast<const std::exception&>(exception).what(),
                 "ERROR: Library not available.");
  }
}

TEST(ServiceLibrary, isReleasedOnce) {
  const test::tInstalledServiceLibrary service("full");
  {
    tServiceLibrary library;
    tFixedStatus status;
    EXPECT_TRUE(library.resolve<void()>("initPXIEx", status));
    EXPECT_EQ(status.code, 0);
    EXPECT_FALSE(library.resolve<void()>("initPXI", status));
    EXPECT_EQ(status.code, -52005);
    library.release();
    library.release();
    tFixedStatus late;
    EXPECT_FALSE(library.resolve<void()>("initPXIEx", late));
    EXPECT_EQ(late.code, -52005);
  }
  EXPECT_EQ(service.takeCalls(), "<load><unload>");
}

}  // namespace

}  // namespace varmex
