# OpenGL and its loader, for whoever includes this: targets GLEW::GLEW and ${opengl}.
#
# GLVND: libOpenGL and libEGL, so that no X library comes in with a headless program.

set(OpenGL_GL_PREFERENCE GLVND)
find_package(OpenGL REQUIRED)
find_package(GLEW REQUIRED)
set(opengl OpenGL::GL)
if(TARGET OpenGL::OpenGL)
    set(opengl OpenGL::OpenGL)
endif()
