#pragma once

/// How many settings are many. Where each access to memory is watched for other threads, of which
/// there are none here, a tenth has to do.
#if defined(__SANITIZE_THREAD__)
constexpr int AHundredThousand = 10'000;
#else
constexpr int AHundredThousand = 100'000;
#endif
