# The same sources on the same system give the same octets, wherever sources and build folder lie: what
# the compiler writes of their paths begins with "." and "./build". A debugger that is started in the
# folder of the sources finds them all the same. Unoptimised builds, which are not delivered, keep the
# full paths.

add_compile_options(
    "$<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>"
    "$<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=./build>")
