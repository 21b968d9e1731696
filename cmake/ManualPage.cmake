# Makes the manual page PAGE of TEMPLATE and of what COMMAND tells of itself, run as a script.
execute_process(COMMAND ${COMMAND} __manual OUTPUT_VARIABLE COMMANDS COMMAND_ERROR_IS_FATAL ANY)
configure_file(${TEMPLATE} ${PAGE} @ONLY)
