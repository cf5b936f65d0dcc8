import { useLayoutEffect } from "preact/hooks";
import { Icon } from "./icons";
import { Button } from "./parts";
import { usePopover } from "./popover";
import { useRoving } from "./roving";

interface Props<T> {
  label: string;
  items: readonly (readonly [value: T, text: string])[];
  onPick: (value: T) => void;
}

/** A button that opens a few choices under itself, each of which is made at once. */
export function Menu<T extends string>({ label, items, onPick }: Props<T>) {
  const { root, open, setOpen, close, onKeyDown } = usePopover();
  return (
    <div class="popover-root" ref={root} onKeyDown={onKeyDown}>
      <Button
        kind="square"
        aria-label={label}
        title={label}
        aria-haspopup="menu"
        aria-expanded={open}
        onClick={() => setOpen(!open)}
      >
        <Icon name="down" />
      </Button>
      {open && (
        <Items
          {...{ label, items }}
          onPick={(value) => {
            close();
            onPick(value);
          }}
        />
      )}
    </div>
  );
}

function Items<T extends string>({ label, items, onPick }: Props<T>) {
  const list = useRoving<HTMLDivElement>("column");
  useLayoutEffect(() => {
    // Also where what holds the button lets nothing out of itself.
    const place = list.current?.parentElement?.getBoundingClientRect();
    if (place && list.current)
      list.current.style.inset = `${place.bottom + 6}px ${innerWidth - place.right}px auto auto`;
    list.current?.querySelector("button")?.focus();
  }, []);
  return (
    <div class="popover menu" role="menu" aria-label={label} ref={list}>
      {items.map(([value, text]) => (
        <button type="button" class="menu-item" role="menuitem" key={value} onClick={() => onPick(value)}>
          {text}
        </button>
      ))}
    </div>
  );
}
