import { Icon } from "../../ui/icons";

/** Whether something can be seen here, in a word. */
export function State({ good, text }: { good: boolean; text: string }) {
  return (
    <p class={good ? "state good" : "state bad"}>
      <Icon name={good ? "check" : "warning"} />
      {text}
    </p>
  );
}
