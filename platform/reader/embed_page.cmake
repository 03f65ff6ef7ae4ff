# Writes a C++ source that holds a page as text: cmake -DOUTPUT=x.cpp -DFILE=page.html -P embed_page.cmake
file(READ ${FILE} text)
file(WRITE ${OUTPUT} "// Generated from capture_page.html.
namespace ost {

extern const char kCapturePage[];
const char kCapturePage[] = R\"page(${text})page\";

}  // namespace ost
")
