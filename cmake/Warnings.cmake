# Shared compile settings for every Tidewick target.
add_library(tidewick_warnings INTERFACE)
target_compile_options(tidewick_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Werror=return-type
    $<$<BOOL:${TIDEWICK_WERROR}>:-Werror>)
target_compile_definitions(tidewick_warnings INTERFACE
    QT_NO_KEYWORDS QT_NO_FOREACH QT_USE_QSTRINGBUILDER)
