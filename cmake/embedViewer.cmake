# Makes a source that holds the viewer's files as texts; dt2Library/viewerFiles.h declares them. Run as a script with
# -DFILES=<paths, separated by commas> and -DOUTPUT=<path>.
string(REPLACE "," ";" files "${FILES}")

# What every compiler must take as one literal.
set(longestLiteral 65535)

set(source "// Made by cmake/embedViewer.cmake out of the files in viewer/.\n#include \"viewerFiles.h\"\n\n")
string(APPEND source "namespace KELMAR_NORVIK2D {\n\nconst std::array<ViewerFile, numViewerFiles> viewerFiles = {{\n")
foreach(file IN LISTS files)
    get_filename_component(name "${file}" NAME)
    file(READ "${file}" text)
    string(LENGTH "${text}" length)
    if(length GREATER longestLiteral)
        message(FATAL_ERROR "${file} is longer than ${longestLiteral} bytes")
    endif()
    string(APPEND source "    {\"${name}\", R\"VIEWER(${text})VIEWER\"},\n")
endforeach()
string(APPEND source "}};\n\n}  // namespace KELMAR_NORVIK2D\n")
file(WRITE "${OUTPUT}" "${source}")
