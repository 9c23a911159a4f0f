# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
#
# Installs the build tree BUILD into STAGE without a word, unless something fails. STAGE is made
# anew, so that nothing that was removed from the project stays in it.
file(REMOVE_RECURSE ${STAGE})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${STAGE}
                OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
