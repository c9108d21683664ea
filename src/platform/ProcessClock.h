#pragma once

namespace vmk::platform
{

// Milliseconds since the kernel started this process, or -1 when the host does
// not say. The start-up benchmark measures with it from before main() runs.
double MillisecondsSinceProcessStart();

} // namespace vmk::platform
