# `cmake --install BUILD --prefix PREFIX`: the command and what it loads at
# run time, in the layout cli/ProgramFiles.cpp looks for beside
# PREFIX/bin/glintwave (change both together):
#   bin/glintwave                       the command
#   bin/glintwave-rsc                   the resource compiler, for new styles
#   lib/glintwave/plugin/               Glintwave.so and its Glintwave.rsc
#   share/glintwave/web/                the settings dialog's page
#   share/glintwave/slurm-render.sh     one render-farm task (sbatch --array)
# The plug-in has a folder of its own: the host gives it the .so's folder as
# its home, where it reads Glintwave.rsc.
#
# The programs link only the system's libraries, so the installed copies
# carry no RPATH (none into the build tree) and run from any prefix.
set(GLINTWAVE_INSTALL_PLUGIN_DIR lib/glintwave/plugin)
set(GLINTWAVE_INSTALL_DATA_DIR share/glintwave)

set_target_properties(glintwave glintwave-rsc Glintwave PROPERTIES INSTALL_RPATH "")

install(TARGETS glintwave glintwave-rsc RUNTIME DESTINATION bin)
install(TARGETS Glintwave LIBRARY DESTINATION ${GLINTWAVE_INSTALL_PLUGIN_DIR} NAMELINK_SKIP)
# glintwave_rsc and korvane_web are custom targets: their files are taken
# from where they put them in the build tree.
install(FILES ${CMAKE_BINARY_DIR}/plugin/Glintwave.rsc DESTINATION ${GLINTWAVE_INSTALL_PLUGIN_DIR})
install(DIRECTORY ${CMAKE_BINARY_DIR}/web/ DESTINATION ${GLINTWAVE_INSTALL_DATA_DIR}/web)
install(PROGRAMS ${PROJECT_SOURCE_DIR}/scripts/slurm-render.sh DESTINATION ${GLINTWAVE_INSTALL_DATA_DIR})
