# Writes a C++ source that holds a file's bytes as an array:
#   cmake -DINPUT=in.zip -DOUTPUT=out.cpp -DSYMBOL=name -P embed_bytes.cmake
# defines `const unsigned char name_data[]` and `const gsize name_size`.
file(READ "${INPUT}" hex HEX)
string(LENGTH "${hex}" hex_length)
math(EXPR size "${hex_length} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
# Sixteen bytes a line keeps the generated file readable.
string(REGEX REPLACE "((0x..,){16})" "\\1\n    " bytes "${bytes}")
file(WRITE "${OUTPUT}.tmp"
  "// Generated from ${INPUT}; do not edit.\n"
  "#include <glib.h>\n\n"
  "extern const unsigned char ${SYMBOL}_data[];\n"
  "extern const gsize ${SYMBOL}_size;\n"
  "const unsigned char ${SYMBOL}_data[] = {\n    ${bytes}\n};\n"
  "const gsize ${SYMBOL}_size = ${size};\n")
file(RENAME "${OUTPUT}.tmp" "${OUTPUT}")
