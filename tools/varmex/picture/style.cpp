#include "tools/varmex/picture/style.h"

namespace tool {

const char* const kStyleSheet = R"svg(<style>
.picture { width: 100%; height: auto }
@media print { .onePage { max-height: 100vh } }
text { font-family: Arial, Helvetica, 'Liberation Sans', 'DejaVu Sans', sans-serif; fill: #111 }
.page { fill: #fff }
.frame { fill: #e4e4e4; stroke: #333; stroke-width: 1.5 }
.title { font-weight: bold }
.middle, .strong, .light { text-anchor: middle }
.strong { font-weight: bold }
.light { text-anchor: middle; font-weight: bold; fill: #fff }
.slot { stroke: #333; stroke-width: 1 }
.kind0 { fill: #f2aaa2 }
.kind1 { fill: #f7c796 }
.kind2 { fill: #c9b5f2 }
.kind3 { fill: #eab4df }
.kind4 { fill: #a9dfbb }
.kind5 { fill: #abd0f5 }
.kind6 { fill: #f4e79b }
.kind7 { fill: #d9d9d9 }
.none { fill: url(#hatch); stroke: #777; stroke-width: 1 }
.panel { fill: #fff; stroke: #111; stroke-width: 1.5 }
.gap { fill: #fff; stroke: #111; stroke-width: 1 }
.bar { fill: #2b3a55; stroke: #fff; stroke-width: 1 }
.stub { stroke: #2b3a55; stroke-width: 3; fill: none }
.arrow { stroke: #a03000; stroke-width: 1.5; fill: none }
.head { fill: #a03000 }
.guide { stroke: #ddd; stroke-width: 1; fill: none }
.lane { stroke: #555; stroke-width: 1.5; fill: none }
.dlane { stroke: #555; stroke-width: 1.5; stroke-dasharray: 4 3; fill: none }
.mark { fill: #fff; stroke: #222; stroke-width: 1.5 }
.controller { fill: #222 }
</style>
<defs><pattern id="hatch" width="7" height="7" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">
<rect width="7" height="7" fill="#fff"/><path d="M0 0V7" stroke="#aaa" stroke-width="2"/></pattern></defs>
)svg";

}  // namespace tool
