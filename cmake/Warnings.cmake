# Shared compile settings for every Tidewick target.
add_library(tidewick_warnings INTERFACE)
target_compile_options(tidewick_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Werror=return-type
    $<$<BOOL:${TIDEWICK_WERROR}>:-Werror>)
# Clang, Apple's included, also gets the warnings Xcode turns on for a new
# project, so that what a Mac developer's build refuses is refused here: the
# sanitizer presets build with clang and warnings as errors.
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(tidewick_warnings INTERFACE
        -Wbool-conversion -Wcomma -Wconstant-conversion -Wempty-body -Wenum-conversion
        -Winfinite-recursion -Wint-conversion -Wnon-literal-null-conversion -Wrange-loop-analysis
        -Wmove -Wunguarded-availability -Wunreachable-code -Wshorten-64-to-32 -Wuninitialized
        -Wconditional-uninitialized -Wunused-function -Wunused-variable -Wduplicate-method-match
        -Wdeprecated-implementations -Wquoted-include-in-framework-header)
endif()
target_compile_definitions(tidewick_warnings INTERFACE
    QT_NO_KEYWORDS QT_NO_FOREACH QT_USE_QSTRINGBUILDER)
