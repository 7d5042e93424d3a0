#ifndef TOOLS_VARMEX_PICTURE_STYLE_H
#define TOOLS_VARMEX_PICTURE_STYLE_H

#include "tools/varmex/picture/svg.h"

namespace tool {

inline constexpr tFont kTitleFont = {"title", 14, 114};
inline constexpr tFont kPlainFont = {"plain", 11};
inline constexpr tFont kSmallFont = {"plain", 10};
inline constexpr tFont kLaneFont = {"title", 11, 114};
inline constexpr tFont kSlotFont = {"strong", 13, 114};
inline constexpr tFont kAliasFont = {"strong", 15, 114};
inline constexpr tFont kMiddleFont = {"middle", 11};
inline constexpr tFont kSmallMiddleFont = {"middle", 10};
inline constexpr tFont kMarkedFont = {"strong", 10, 114};
inline constexpr tFont kInverseFont = {"light", 11, 114};

}  // namespace tool

#endif
