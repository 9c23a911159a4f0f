# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Installs the build tree BUILD into STAGE and prints errors only. STAGE is removed first, so that
# it has no files that were removed from the project.
file(REMOVE_RECURSE ${STAGE})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGE}
                OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
