# Completion of vq3900-tool's command line for bash. Commands, options and blocks are asked of the tool's own help, so
# that they never differ from it.

_vq3900_tool() {
  local tool=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local -a path=()
  local word help choices i
  COMPREPLY=()

  # The commands that stand before the word: they go on as long as the help of the one before names them.
  help=$("$tool" --help 2>/dev/null) || return 0
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    _vq3900_tool_listed Subcommands "$help" | grep -qx -e "$word" || continue
    path+=("$word")
    help=$("$tool" "${path[@]}" --help 2>/dev/null) || return 0
  done

  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(grep -oE -e '^  -[^ ]*' <<<"$help" | tr ',' ' ')" -- "$current")
    return 0
  fi
  if [[ $previous == -* ]]; then
    # Some options take one of a few words; a number, or a text of a form of its own, is for the user to say.
    choices=$(sed -nE "s/^  ([^ ]*,)?$previous TEXT:\{([^}]*)\}.*/\2/p" <<<"$help" | tr ',' ' ')
    if [ -n "$choices" ]; then
      mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
      return 0
    fi
    if grep -qE -e "^  ([^ ]*,)?$previous (FLOAT|INT|UINT|TEXT:)" <<<"$help"; then return 0; fi
  fi

  choices=$(_vq3900_tool_listed Subcommands "$help")
  [ -z "$choices" ] && choices=$(sed -nE 's/^  [a-z_]+ TEXT:\{([^}]*)\}.*/\1/p' <<<"$help" | tr ',' ' ')
  if [ -n "$choices" ]; then
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
  elif [[ $previous == -* ]] || grep -q '^Positionals:' <<<"$help"; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}

# The first words of one part of a help text.
_vq3900_tool_listed() {
  sed -nE "/^$1:/,/^\$/s/^  ([a-z][a-z0-9_-]*) .*/\1/p" <<<"$2"
}

complete -F _vq3900_tool vq3900-tool
