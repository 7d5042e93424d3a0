# embed_text(TARGET NAME FILE) puts a text file into a program, as the tEmbedded NAME, which
# tools/varmex/text/embedded.h or whoever uses it declares.
function(embed_text target name file)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} text)
  file(SHA256 ${file} hash)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  file(CONFIGURE OUTPUT ${source} @ONLY CONTENT [=[
#include "tools/varmex/text/embedded.h"

namespace tool {
extern const tEmbedded @name@;
}

const tool::tEmbedded tool::@name@ = {R"file(@text@)file", "@hash@"};
]=])
  target_sources(${target} PRIVATE ${source})
endfunction()
