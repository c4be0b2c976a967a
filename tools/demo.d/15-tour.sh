# shellcheck shell=bash
say "tour shows text, a failure record, and threads that share an object"
show tour
tour | grep -q '^4 workers did their work$'
