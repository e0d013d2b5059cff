# cmake -D DESKTOP_FILE=… -P check-desktop-file.cmake
# A program that declares folders becomes the desktop's program for folders where no other
# has been chosen.
file(STRINGS ${DESKTOP_FILE} types REGEX "^MimeType=")
if(NOT types MATCHES "video/mp4" OR types MATCHES "inode/")
    message(FATAL_ERROR "videos and nothing but videos: ${types}")
endif()
