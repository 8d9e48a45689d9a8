#pragma once

namespace Tavrine::Tool
{

/// Has the heap of this process grow in one piece, of large pages where the system has them. What a run
/// reads and builds is some ten megabytes in small blocks, used once and in order: thousands of page faults
/// would cost it a fifth of its time. Memory counts only once it is touched. Called once, by the only thread.
void ReserveHeap();

} // namespace Tavrine::Tool
