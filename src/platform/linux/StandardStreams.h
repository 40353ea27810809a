#pragma once

namespace tavril {

/// Makes the standard streams safe to use. One that the program was started without is taken by a file on
/// which reading or writing fails, so that nothing opened later gets its number and what is printed into it;
/// and a reader who has gone is an error of the writing instead of the end of the program. To be called
/// first.
void secureStandardStreams();

}  // namespace tavril
