-- Receives the lines of the debug log: the name of its window, and one or more lines of text.
function add_text_to_log(window_name, text)
  log_window_append(window_name, text)
end
