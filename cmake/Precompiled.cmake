# Most of a file's compile time goes to the same Qt and standard headers;
# tidewick_precompile parses them once per target, as a precompiled header.
# C++ only: the Objective-C++ files stay exactly as the macOS check sees them.
function(tidewick_precompile target)
    set(headers ${ARGN})
    list(TRANSFORM headers PREPEND "$<$<COMPILE_LANGUAGE:CXX>:<")
    list(TRANSFORM headers APPEND "$<ANGLE-R>>")
    target_precompile_headers(${target} PRIVATE ${headers})
endfunction()
